# Generalized estimating equations by geepack and gee on the data sets that real_data.R wrote.
#   Rscript fits_gee.R FOLDER      (reads sets.csv and the data, writes gee.csv)
#
# Three fits per model:
#   geepack held, gee held   alpha is held (corstr = "fixed") at the value that the program's
#                            formula gives for the residuals of the very fit: start from any alpha,
#                            fit, compute alpha from the residuals, fit again, until it stands
#                            still.
#   geepack own, gee own     alpha as each package estimates it. It is recomputed from the residuals
#                            by the formula that the document states for the package.
# model errors are given without the dispersion, which the program does not apply.
suppressMessages({library(geepack); library(gee)})
folder <- commandArgs(TRUE)[1]
sets <- read.csv(file.path(folder, "sets.csv"))
lines <- "set,block,fit,row,estimate,model,robust"

# Sums of the residuals that all conventions are made of.
sums <- function(y, mu, id) {
  r <- (y - mu) / sqrt(mu * (1 - mu))
  n <- table(id)
  list(products = sum(tapply(r, id, sum)^2) - sum(r^2), squares = sum(r^2), N = length(y),
       M = sum(n * (n - 1)))
}
alpha_program <- function(s, p) s$products / ((s$M - p) * s$squares / (s$N - p))
alpha_gee <- function(s, p) s$products / ((s$M - 2 * p) * s$squares / (s$N - p))
alpha_geepack <- function(s, p) s$products / (s$M * s$squares / s$N)

by_geepack <- function(f, d, id, alpha = NULL) {
  control <- geese.control(epsilon = 1e-11, maxit = 100)
  n <- table(id)
  d$id_ <- id
  if (is.null(alpha)) {
    m <- geeglm(f, binomial, d, id = id_, corstr = "exchangeable", control = control)
    alpha <- m$geese$alpha
  } else {
    m <- geeglm(f, binomial, d, id = id_, corstr = "fixed",
                zcor = rep(alpha, sum(n * (n - 1) / 2)), control = control)
  }
  phi <- m$geese$gamma
  list(beta = coef(m), model = sqrt(diag(m$geese$vbeta.naiv) / phi), robust = sqrt(diag(vcov(m))),
       alpha = alpha, phi = phi, mu = as.vector(fitted(m)))
}
by_gee <- function(f, d, id, alpha = NULL) {
  d$id_ <- id
  if (is.null(alpha)) {
    invisible(capture.output(suppressMessages(
      m <- gee(f, id_, d, family = binomial, corstr = "exchangeable", tol = 1e-10, maxiter = 60))))
    alpha <- m$working.correlation[1, 2]
  } else {
    held <- matrix(alpha, max(table(id)), max(table(id)))
    diag(held) <- 1
    invisible(capture.output(suppressMessages(
      m <- gee(f, id_, d, family = binomial, corstr = "fixed", R = held, tol = 1e-10,
               maxiter = 60))))
  }
  list(beta = coef(m), model = sqrt(diag(m$naive.variance) / m$scale),
       robust = sqrt(diag(m$robust.variance)), alpha = alpha, phi = m$scale,
       mu = as.vector(m$fitted.values))
}
number <- function(v) sprintf("%.15g", v)
put <- function(set, block, fit, m, recomputed) {
  lines <<- c(lines, paste(set, block, fit, seq_along(m$beta) - 1L, number(m$beta),
                           number(m$model), number(m$robust), sep = ","),
              paste(set, block, fit, "alpha", number(m$alpha), number(recomputed), "", sep = ","),
              paste(set, block, fit, "phi", number(m$phi), "", "", sep = ","))
}
# alpha such that a fit with it held has residuals that give it back: the secant method on the
# difference, from two fits.
stand_still <- function(f, frame, y, id, p, start) {
  miss <- function(a) {
    m <- by_geepack(f, frame, id, a)
    list(m = m, d = alpha_program(sums(y, m$mu, id), p) - a)
  }
  a0 <- start
  f0 <- miss(a0)
  a1 <- a0 + f0$d
  for (k in 1:40) {
    f1 <- miss(a1)
    if (abs(f1$d) < 1e-13) break
    a2 <- if (f1$d == f0$d) a1 + f1$d else a1 - f1$d * (a1 - a0) / (f1$d - f0$d)
    a0 <- a1; f0 <- f1; a1 <- a2
  }
  stopifnot(abs(f1$d) < 1e-10)
  f1$m
}

for (set in sets$name[sets$kind == "gee"]) {
  d <- read.csv(file.path(folder, paste0(set, ".csv")))
  x <- d[-(1:3)]
  z <- rev(x)
  home <- d$p == 0
  jobs <- list("[P|X]" = list(d$p, x, d$cluster), "[Y|Z]" = list(d$y, z, d$cluster),
               "[Y|X]" = list(d$y, x, d$cluster),
               "[Y|X;P=0]" = list(d$y[home], x[home, , drop = FALSE], d$cluster[home]))
  for (block in names(jobs)) {
    response <- jobs[[block]][[1]]
    id <- jobs[[block]][[3]]
    frame <- data.frame(response, jobs[[block]][[2]])
    p <- ncol(frame)
    # The formula's dot must not take in the cluster column that the solvers add.
    f <- reformulate(setdiff(names(frame), "response"), "response")
    own <- by_geepack(f, frame, id)
    put(set, block, "geepack own", own, alpha_geepack(sums(response, own$mu, id), p))
    own_gee <- by_gee(f, frame, id)
    put(set, block, "gee own", own_gee, alpha_gee(sums(response, own_gee$mu, id), p))
    start <- alpha_program(sums(response, own$mu, id), p)
    held <- stand_still(f, frame, response, id, p, start)
    put(set, block, "geepack held", held, alpha_program(sums(response, held$mu, id), p))
    g <- by_gee(f, frame, id, held$alpha)
    put(set, block, "gee held", g, alpha_program(sums(response, g$mu, id), p))
  }
}
writeLines(lines, file.path(folder, "gee.csv"))
