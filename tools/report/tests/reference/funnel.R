# Reference values of the funnel plot: limits from the formulas and R's own distributions, differences
# between hospitals from the package metafor.
#
#     ../../../install_packages.sh r-base-core r-cran-metafor
#     Rscript funnel.R > funnel.json
suppressPackageStartupMessages(library(metafor))
number <- function(x) ifelse(is.nan(x), "\"nan\"", formatC(x, digits = 17, width = 1, format = "g"))
record <- function(...) {
  fields <- c(...)
  paste0("{", paste0("\"", names(fields), "\":", number(fields), collapse = ","), "}")
}

# The limit at probability p: r events with P(R <= r) >= p first, less the share of P(R = r) that is
# above p. A lower limit stays between 0 and 1, an upper one above 1.
limit <- function(p, n, expected) {
  prob <- expected / n
  r <- qbinom(p, n, prob)
  excess <- (pbinom(r, n, prob) - p) / dbinom(r, n, prob)
  ratio <- (r - excess) / expected
  if (p < 0.5) min(1, max(0, ratio)) else max(1, ratio)
}
limits <- list()
for (n in c(1, 2, 7, 40, 204, 1000, 15000, 1000000)) {
  for (prob in c(0.0003, 0.011, 0.08, 0.3, 0.5, 0.92, 0.9991)) {
    for (level in c(0.5, 0.95, 0.998)) {
      expected <- n * prob
      tail <- (1 - level) / 2
      limits[[length(limits) + 1]] <- record(cases = n, expected = expected, level = level,
        lower = limit(tail, n, expected), upper = limit(1 - tail, n, expected))
    }
  }
}

# Clopper and Pearson's interval as quantiles of the beta distribution, over the expected share. Those of
# whole numbers are also what binom.test gives.
intervals <- list()
for (n in c(1, 3, 50, 204, 3000, 1000000)) {
  for (observed in unique(pmin(n, c(0, 0.2, 1, 2.5, 17, 49.75, 50, 203.999, 3000, 12345.5)))) {
    for (level in c(0.95, 0.998)) {
      expected <- 0.037 * n
      tail <- (1 - level) / 2
      lower <- if (observed == 0) 0 else qbeta(tail, observed, n - observed + 1)
      upper <- if (observed == n) 1 else qbeta(1 - tail, observed + 1, n - observed)
      if (observed == round(observed)) {
        stopifnot(all.equal(c(lower, upper), as.numeric(binom.test(observed, n, conf.level = level)$conf.int)))
      }
      intervals[[length(intervals) + 1]] <- record(observed = observed, expected = expected, cases = n,
        level = level, lower = lower * n / expected, upper = upper * n / expected)
    }
  }
}

# Tails of the chi-squared distribution.
tails <- list()
for (degrees in c(1, 2, 3, 10, 24, 25, 400, 4999)) {
  for (share in c(0.01, 0.3, 0.9, 1, 1.1, 1.5, 2, 5)) {
    x <- share * degrees
    tails[[length(tails) + 1]] <- record(x = x, degrees = degrees, tail = pchisq(x, degrees, lower.tail = FALSE))
  }
}

# Differences between hospitals and the limits that they widen.
set.seed(49)
study <- function(hospitals, spread) {
  cases <- round(rlnorm(hospitals, 6, 0.9)) + 5
  share <- rbeta(hospitals, 20, 200)
  observed <- rbinom(hospitals, cases, pmin(0.95, share * exp(rnorm(hospitals, 0, spread))))
  # Events that count in part, as imputed ones do.
  data.frame(observed = observed - ifelse(observed > 0, round(runif(hospitals), 3), 0),
    expected = round(cases * share, 3), cases = cases)
}
judged <- function(data) {
  used <- data[data$expected > 0 & data$expected < data$cases, ]
  y <- used$observed / used$expected
  s <- sqrt((1 - used$expected / used$cases) / used$expected)
  fit <- rma(yi = y, vi = s^2, method = "DL")
  w <- 1 / s^2
  q <- sum(w * (y - weighted.mean(y, w))^2)
  tau2 <- max(0, (q - (nrow(used) - 1)) / (sum(w) - sum(w^2) / sum(w)))
  stopifnot(all.equal(c(fit$QE, fit$tau2), c(q, tau2)), fit$k == nrow(used))
  first <- used[1, ]
  s2 <- s[1]^2
  tail <- (1 - 0.998) / 2
  exact <- c(limit(tail, first$cases, first$expected), limit(1 - tail, first$cases, first$expected))
  wide <- pmax(0, 1 + (exact - 1) * sqrt((s2 + tau2) / s2))
  rows <- sapply(seq_len(nrow(data)), function(i) record(unlist(data[i, ])))
  paste0("{\"hospitals\":[", paste(rows, collapse = ",\n"), "],\n\"result\":",
    record(q = fit$QE, degrees = fit$k - 1, pValue = fit$QEp, tau2 = fit$tau2, lower = wide[1], upper = wide[2]), "}")
}
studies <- list(study(25, 0), study(25, 0.4), study(140, 0.15), study(2, 1), study(11, 0.8),
  study(600, 0.05), rbind(study(9, 0.3), data.frame(observed = c(0, 3), expected = c(0, 3), cases = c(14, 3))))

cat("{\"tails\":[\n", paste(tails, collapse = ",\n"), "\n],\n\"limits\":[\n", paste(limits, collapse = ",\n"), "\n],\n\"intervals\":[\n",
  paste(intervals, collapse = ",\n"), "\n],\n\"studies\":[\n", paste(sapply(studies, judged), collapse = ",\n"),
  "\n]}\n", sep = "")
