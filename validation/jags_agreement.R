# The hierarchical model in JAGS on one data set.
#   Rscript jags_agreement.R FOLDER ITERATIONS
#
# Reads data.csv and fixed.csv (beta_P and the [X|Z] tables as the program holds them) from FOLDER
# and writes draws_fixed.csv and draws_full.csv. P is stochastic where it is missing, and Y given P
# has chance 1 where P = 1. Two models:
#   fixed   beta_P and the tables are data: the model that the program samples
#   full    beta_P has the normal prior, the tables have uniform priors
suppressMessages(library(rjags))
arguments <- commandArgs(TRUE)
folder <- arguments[1]
iterations <- as.integer(arguments[2])
d <- read.csv(file.path(folder, "data.csv"), na.strings = "")
settings <- read.csv(file.path(folder, "fixed.csv"))
v <- (ncol(d) - 4) / 2
z <- as.matrix(d[4 + seq_len(v)])
x <- as.matrix(d[4 + v + seq_len(v)])

model <- function(learn) paste0("model {
  for (i in 1:n) {
    for (j in 1:v) { x[i, j] ~ dbern(t[j, z[i, j] + 1]) }
    logit(rate_p[i]) <- beta_p[1] + inprod(x[i, ], beta_p[2:(v + 1)])
    p[i] ~ dbern(rate_p[i])
    logit(rate_y[i]) <- beta_y[1] + inprod(x[i, ], beta_y[2:(v + 1)])
    y[i] ~ dbern(p[i] + (1 - p[i]) * rate_y[i])
  }
  for (j in 1:(v + 1)) { beta_y[j] ~ dnorm(0, prior) }
", if (learn) "
  for (j in 1:(v + 1)) { beta_p[j] ~ dnorm(0, prior) }
  for (j in 1:v) { for (k in 1:2) { t[j, k] ~ dbeta(1, 1) } }
", "}")

sample <- function(learn) {
  data <- list(n = nrow(d), v = v, z = z, x = x, p = d$P1, y = d$Y, prior = settings$prior[1])
  start <- list(p = ifelse(is.na(d$P1), 0, NA))
  if (!learn) {
    data$beta_p <- settings$beta_p
    data$t <- cbind(settings$t0, settings$t1)[-1, , drop = FALSE]
  }
  inits <- lapply(1:2, function(k) c(start, list(.RNG.name = "base::Mersenne-Twister",
                                                 .RNG.seed = 100 + k)))
  m <- jags.model(textConnection(model(learn)), data, inits, n.chains = 2, n.adapt = 1000,
                  quiet = TRUE)
  update(m, 1000, progress.bar = "none")
  coda.samples(m, "beta_y", iterations, progress.bar = "none")
}
for (learn in c(FALSE, TRUE)) {
  draws <- sample(learn)
  write.csv(do.call(rbind, lapply(draws, as.matrix)),
            file.path(folder, if (learn) "draws_full.csv" else "draws_fixed.csv"),
            row.names = FALSE)
}
