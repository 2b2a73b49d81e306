# Packages for R. Usage: Rscript peer_r.R TASK FOLDER VARIANT INDICATORS
#
#   read  fread    data.table::fread            write  fwrite   data.table::fwrite
#   logit glm      glm.fit, no penalty          cstat  pROC     pROC::auc
#   gee   geepack  geepack::geese.fit           mcmc   mice     mice, logistic regressions
#   gee   gee      gee::gee                     mcmc   jags     JAGS by rjags
#
# Seconds are processor seconds of the step alone. One line of JSON is printed.

arguments <- commandArgs(trailingOnly = TRUE)
task <- arguments[1]
folder <- arguments[2]
variant <- arguments[3]
indicator_count <- as.integer(arguments[4])
data_file <- file.path(folder, "data.csv")

library_of <- c(fread = "data.table", fwrite = "data.table", glm = "stats", pROC = "pROC",
                geepack = "geepack", gee = "gee", mice = "mice", jags = "rjags")[[variant]]
suppressPackageStartupMessages(library(library_of, character.only = TRUE))

seconds_of <- function(step) {
  before <- proc.time()
  step
  spent <- proc.time() - before
  sum(spent[c("user.self", "sys.self")])
}

report <- function(peer, n, p, seconds, ...) {
  version <- as.character(if (variant == "jags") rjags::jags.version() else
    packageVersion(library_of))
  more <- c(...)
  line <- sprintf(paste0('{"task": "%s", "peer": "%s", "version": "%s", "n": %d, "p": %d, ',
                         '"compute_s": %.6f'), task, peer, version, n, p, seconds)
  cat(line, if (length(more)) paste0(", ", paste(more, collapse = ", ")), "}\n", sep = "")
}

coefficients_field <- function(beta) {
  paste0('"coef": [', paste(sprintf('"%.8g"', beta), collapse = ", "), "]")
}

# The [Y|Z] model's design with the intercept, its outcomes and hospitals.
read_model <- function() {
  frame <- data.table::fread(data_file, showProgress = FALSE)
  variables <- (ncol(frame) - 3 - indicator_count) / 2
  z <- as.matrix(frame[, (4 + indicator_count):(3 + indicator_count + variables), with = FALSE])
  x <- as.matrix(frame[, (4 + indicator_count + variables):ncol(frame), with = FALSE])
  y <- frame[[3]]
  indicators <- as.matrix(frame[, 4:(3 + indicator_count), with = FALSE])
  p <- as.integer(rowSums(indicators, na.rm = TRUE) > 0)
  p[rowSums(is.na(indicators)) > 0] <- NA
  p[y == 0 & !is.na(p)] <- 0L
  ids <- frame[[2]]
  list(z = unname(cbind(1, z)), x = unname(cbind(1, x)), y = y, p = p,
       hospital = match(ids, unique(ids)))
}

scores <- function() {
  path <- file.path(folder, "scores.bin")
  values <- readBin(path, "double", file.size(path) / 8)
  half <- length(values) / 2
  list(predictions = values[1:half], outcomes = values[(half + 1):(2 * half)])
}

run_glm <- function() {
  model <- read_model()
  seconds <- seconds_of(
    fit <- glm.fit(model$z, model$y, family = binomial(),
                   control = glm.control(epsilon = 1e-12, maxit = 100)))
  report("R glm.fit", nrow(model$z), ncol(model$z), seconds, coefficients_field(fit$coefficients))
}

run_gee <- function() {
  model <- read_model()
  if (variant == "geepack") {
    named <- model$z
    colnames(named) <- paste0("z", seq_len(ncol(named)) - 1)
    seconds <- seconds_of(
      fit <- geepack::geese.fit(named, model$y, model$hospital, family = binomial(),
                                corstr = "exchangeable",
                                control = geepack::geese.control(epsilon = 1e-8, maxit = 100)))
    beta <- fit$beta
    alpha <- fit$alpha
  } else {
    sink(nullfile())
    seconds <- seconds_of(
      fit <- suppressMessages(gee::gee(y ~ z - 1, id = hospital, data = model, family = binomial(),
                                       corstr = "exchangeable", tol = 1e-8, maxiter = 100)))
    sink()
    beta <- fit$coefficients
    alpha <- fit$working.correlation[1, 2]
  }
  report(paste("R", variant), nrow(model$z), ncol(model$z), seconds, coefficients_field(beta),
         sprintf('"alpha": %.10g', alpha))
}

run_fread <- function() {
  data.table::setDTthreads(1)
  seconds <- seconds_of(frame <- data.table::fread(data_file, showProgress = FALSE))
  report("data.table fread", nrow(frame), ncol(frame), seconds)
}

run_fwrite <- function() {
  data.table::setDTthreads(1)
  frame <- data.table::fread(file.path(folder, "predictions.csv"), showProgress = FALSE)
  target <- file.path(folder, "written.csv")
  seconds <- seconds_of(data.table::fwrite(frame, target, showProgress = FALSE))
  report("data.table fwrite", nrow(frame), ncol(frame), seconds,
         sprintf('"bytes": %.0f', file.size(target)))
}

run_proc <- function() {
  values <- scores()
  seconds <- seconds_of(
    area <- pROC::auc(pROC::roc(values$outcomes, values$predictions, quiet = TRUE,
                                direction = "<", levels = c(0, 1))))
  report("R pROC", length(values$outcomes), 0L, seconds,
         sprintf('"value": "%.12f"', as.numeric(area)))
}

# One cycle of mice draws every column with missing cells from a logistic regression on all other
# columns: a different model, but what its users run for such data.
run_mice <- function() {
  model <- read_model()
  frame <- data.frame(y = model$y, p = factor(model$p))
  for (j in 2:ncol(model$x)) {
    frame[[paste0("x", j)]] <- factor(model$x[, j])
  }
  frame <- cbind(frame, model$z[, -1])
  names(frame) <- make.names(names(frame), unique = TRUE)
  cycles <- 2
  seconds <- seconds_of(
    mice::mice(frame, m = 1, maxit = cycles, defaultMethod = c("pmm", "logreg", "polyreg", "polr"),
               printFlag = FALSE, seed = 1))
  report("R mice", nrow(frame), ncol(model$x), seconds,
         sprintf('"s_per_iter": %.6g', seconds / cycles), sprintf('"iterations": %d', cycles))
}

jags_model <- "
model {
  for (k in 1:K) {
    x[row[k], column[k]] ~ dbern(prior[column[k], zcell[k]])
  }
  for (i in 1:n) {
    p[i] ~ dbern(ilogit(inprod(x[i, ], a)))
    y[i] ~ dbern(p[i] + (1 - p[i]) * ilogit(inprod(x[i, ], b)))
  }
  for (j in 1:v) {
    b[j] ~ dnorm(0, 1)
  }
}
"

run_jags <- function() {
  model <- read_model()
  x <- model$x
  n <- nrow(x)
  missing <- which(is.na(x), arr.ind = TRUE)
  prior <- t(sapply(seq_len(ncol(x)), function(j) {
    if (j == 1) c(1, 1) else
      sapply(0:1, function(z) mean(x[model$z[, j] == z, j], na.rm = TRUE))
  }))
  complete <- stats::complete.cases(x) & !is.na(model$p)
  a <- glm.fit(x[complete, ], model$p[complete], family = binomial())$coefficients
  p_start <- ifelse(is.na(model$p), 0L, NA)
  rjags::load.module("glm", quiet = TRUE)
  jags <- rjags::jags.model(
    textConnection(jags_model),
    data = list(n = n, v = ncol(x), K = nrow(missing), row = missing[, 1], column = missing[, 2],
                zcell = model$z[missing] + 1, prior = prior, x = x, p = model$p, y = model$y,
                a = a),
    inits = list(p = p_start, b = rep(0, ncol(x)), .RNG.name = "base::Mersenne-Twister",
                 .RNG.seed = 1),
    n.adapt = 0, quiet = TRUE)
  iterations <- 10
  seconds <- seconds_of(update(jags, iterations, progress.bar = "none"))
  report("JAGS", n, ncol(x), seconds, sprintf('"s_per_iter": %.6g', seconds / iterations),
         sprintf('"iterations": %d', iterations))
}

switch(variant, fread = run_fread(), fwrite = run_fwrite(), glm = run_glm(), geepack = run_gee(),
       gee = run_gee(), pROC = run_proc(), mice = run_mice(), jags = run_jags(),
       stop("unknown variant"))
