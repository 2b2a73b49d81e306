# R-hat and effective sample sizes of chains of several kinds by R's package posterior.
#   Rscript convergence.R        (writes data/convergence_draws.csv and data/convergence.csv)
#
# The draws are rounded to six digits before they are judged, as chain files hold them.
suppressMessages(library(posterior))
RNGkind("Mersenne-Twister", "Inversion", "Rejection")
set.seed(20210615)
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")

autoregression <- function(n, rho) as.numeric(arima.sim(list(ar = rho), n))
chains <- function(m, draw) vapply(seq_len(m), draw, numeric(length(draw(1))))
sets <- list(
  independent = chains(4, function(k) rnorm(100)),
  slow        = chains(4, function(k) autoregression(100, 0.9)),
  alternating = chains(2, function(k) autoregression(64, -0.8)),
  shifted     = chains(4, function(k) rnorm(50) + (k == 3)),
  spread      = chains(4, function(k) rnorm(60) * (1 + 4 * (k == 1))),
  drifting    = chains(2, function(k) rnorm(80) + seq_len(80) / 20),
  heavy       = chains(3, function(k) rcauchy(75)),
  odd_length  = chains(3, function(k) autoregression(51, 0.5)),
  one_chain   = chains(1, function(k) autoregression(120, 0.3)),
  ties        = chains(4, function(k) rbinom(40, 4, 0.4)),
  stuck       = chains(3, function(k) if (k == 2) rep(0.25, 30) else rnorm(30)),
  six         = chains(4, function(k) rnorm(6)),
  seven       = chains(2, function(k) rnorm(7)),
  five        = chains(4, function(k) rnorm(5)),
  constant    = matrix(3.5, 20, 2))

draws <- "Set,Chain,Value"
results <- "Set,Rhat,Bulk,Tail"
for (name in names(sets)) {
  x <- sets[[name]]
  text <- formatC(x, digits = 6, format = "g", width = 1)
  x[] <- as.numeric(text)
  draws <- c(draws, paste(name, rep(seq_len(ncol(x)), each = nrow(x)), text, sep = ","))
  values <- suppressWarnings(c(rhat(x), ess_bulk(x), ess_tail(x)))
  results <- c(results, paste(c(name, ifelse(is.na(values), "nan", sprintf("%.15g", values))),
                              collapse = ","))
}
writeLines(draws, file.path(folder, "convergence_draws.csv"))
writeLines(results, file.path(folder, "convergence.csv"))
