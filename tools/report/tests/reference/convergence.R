# Reference values of the convergence figures, by the R package posterior.
#
#     Rscript convergence.R > convergence.json
#
# needs the Debian packages r-base-core and r-cran-posterior. The draws are stored beside the values
# that posterior gives for them, with the six digits that a chain file has.
suppressMessages(library(posterior))
options(warn = -1)
set.seed(20110415)

ar <- function(n, rho) as.numeric(stats::filter(rnorm(n, sd = sqrt(1 - rho^2)), rho, "recursive"))
chains <- function(count, make) sapply(seq_len(count), make)

cases <- list(
  "independent" = chains(4, function(c) rnorm(200)),
  "one chain" = matrix(rnorm(300, -2.3, 0.1)),
  "one drifting chain" = matrix(rnorm(200) + seq(-1, 1, length.out = 200)),
  "odd length" = chains(3, function(c) rnorm(101, 5)),
  "AR(0.95)" = chains(4, function(c) ar(400, 0.95)),
  "AR(0.5)" = chains(2, function(c) ar(250, 0.5)),
  "antithetic" = chains(4, function(c) ar(200, -0.9)),
  "alternating" = chains(2, function(c) rep(c(1, -1), 50) + rnorm(100, sd = 0.01)),
  "exactly alternating" = matrix(rep(c(1, -1), 40), 40),
  "Cauchy" = chains(4, function(c) rcauchy(200)),
  "different places" = chains(2, function(c) rnorm(150, 3 * c)),
  "different spreads" = chains(4, function(c) rnorm(150, sd = c)),
  "far from zero" = chains(2, function(c) 123000 + round(rnorm(100, sd = 20))),
  "few values" = chains(2, function(c) rbinom(120, 3, 0.4)),
  "rare value" = chains(2, function(c) rbinom(120, 1, 0.02)),
  "constant" = matrix(0.731, 100, 2),
  "one constant chain" = cbind(rep(0.1, 60), rnorm(60)),
  "constant at different places" = cbind(rep(-1, 50), rep(1, 50)),
  "as good as constant" = cbind(1 + 1e-17 * rnorm(50), rep(1, 50)),
  "not a number" = cbind(rnorm(60), c(rnorm(30), NaN, rnorm(29))),
  "infinite" = cbind(rnorm(60), c(rnorm(30), Inf, rnorm(29))),
  "five draws" = matrix(rnorm(10), 5),
  "six draws" = matrix(rnorm(12), 6),
  "seven draws" = matrix(rnorm(21), 7),
  "twelve draws" = matrix(rnorm(24), 12),
  "fourteen draws" = matrix(rnorm(28), 14),
  "one draw" = matrix(rnorm(2), 1),
  "one draw in all" = matrix(0.5),
  "large" = chains(2, function(c) 1e5 * ar(1000, 0.3) / 1e9)
)

text <- function(x) {
  ifelse(is.nan(x) | is.na(x), "\"nan\"", ifelse(is.infinite(x), ifelse(x > 0, "\"inf\"", "\"-inf\""),
    formatC(x, digits = 17, width = 1, format = "g")))
}
array_text <- function(x) paste0("[", paste(text(x), collapse = ","), "]")
field <- function(name, value) paste0("  \"", name, "\": ", value)
stored <- function(x) paste0("[", paste(ifelse(is.finite(x), formatC(x, digits = 6, width = 1, format = "g"),
  text(x)), collapse = ","), "]")

quantiles <- function(x) unname(quantile2(as.numeric(x), c(0.025, 0.5, 0.975)))
lags <- function(x) {
  n <- min(length(x), 41)
  if (anyNA(x) || any(is.infinite(x)) || length(x) < 2) return(rep(NaN, n))
  autocorrelation(x)[seq_len(n)]
}
# Summed kernel by kernel, at every 37th of 512 points. R's density() takes a short cut that is good
# to three digits.
kernels <- function(x) {
  x <- x[is.finite(x)]
  h <- bw.nrd0(x)
  at <- seq(min(x) - 3 * h, max(x) + 3 * h, length.out = 512)[seq(1, 512, by = 37)]
  list(x = at, y = sapply(at, function(a) mean(dnorm(a, x, h))))
}

one <- function(name) {
  # As read back from six digits.
  x <- cases[[name]]
  x[] <- as.numeric(formatC(x, digits = 6, width = 1, format = "g"))
  q <- quantiles(x)
  lines <- c(
    field("name", paste0("\"", name, "\"")),
    field("chains", paste0("[\n   ", paste(apply(x, 2, stored), collapse = ",\n   "), "]")),
    field("mean", text(mean(x))), field("sd", text(sd(x))),
    field("q025", text(q[1])), field("median", text(q[2])), field("q975", text(q[3])),
    field("rhat", text(rhat(x))), field("essBulk", text(ess_bulk(x))), field("essTail", text(ess_tail(x))),
    field("mcseMean", text(mcse_mean(x))), field("autocorrelation", array_text(lags(x[, 1])))
  )
  if (sum(is.finite(x)) > 1) {
    k <- kernels(x)
    lines <- c(lines, field("densityX", array_text(k$x)), field("densityY", array_text(k$y)))
  }
  paste0(" {\n", paste(lines, collapse = ",\n"), "\n }")
}
cat("[\n", paste(sapply(names(cases), one), collapse = ",\n"), "\n]\n", sep = "")
