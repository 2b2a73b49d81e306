# Limits of ratios by plain convolution and uniroot, and false discovery rates by p.adjust.
#   Rscript ratio_limits.R   (writes data/ratio_risks.csv, data/ratio_limits.csv,
#                             data/false_discovery.csv)
#
# A set is a hospital of one or several completed studies: risks, with the events of each. A shift eta
# of all log-odds is sought at which the mean over the studies of P(S >= O), or P(S <= O), is the
# wanted tail, half of P(S = O) left out from five expected events up.
set.seed(20090321)
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")

masses <- function(q) {
  f <- 1
  for (x in q) f <- c(f, 0) * (1 - x) + c(0, f) * x
  f
}
log_odds <- function(x) qlogis(min(max(x, 1e-300), 1 - 1e-15))
risks <- function(n, mean, sd) round(plogis(rnorm(n, mean, sd)), 6)
vary <- function(p, sd) round(plogis(qlogis(p) + rnorm(1, 0, sd)), 6)
study <- function(p, events) list(p = p, events = events)
p300 <- risks(300, -2.5, 1)
p40 <- risks(40, -3, 1)
p120 <- risks(120, -2, 0.8)
p2500 <- risks(2500, -1.8, 1)
p8 <- risks(8, -2, 1)
sets <- list(
  ordinary    = list(study(p300, 37)),
  exact       = list(study(p40, 4)),
  one_event   = list(study(p40, 1)),
  no_event    = list(study(p40, 0)),
  no_event_mid = list(study(p300, 0)),
  all_events  = list(study(p8, 8)),
  all_but_one = list(study(p8, 7)),
  outlier     = list(study(p120, 61)),
  large       = list(study(p2500, 655)),
  low_outlier = list(study(p2500, 255)),
  imputed     = lapply(c(15, 18, 12, 16, 15), function(o)
    study(vary(p120[seq_len(100 + o)], 0.05), o)),
  few_imputed = lapply(c(0, 1, 2, 0, 1, 1), function(o) study(vary(p40[seq_len(34 + o)], 0.1), o)),
  wide        = lapply(c(24, 36, 30, 27, 33, 42), function(o) study(vary(p300, 0.1), o)))

lines <- c("Set,Study,Events,Risk")
limits <- c("Set,Ratio,Lower95,Upper95,Lower998,Upper998,P")
for (name in names(sets)) {
  studies <- sets[[name]]
  expected <- sum(sapply(studies, function(s) sum(s$p)))
  share <- if (expected / length(studies) >= 5) 0.5 else 1
  tail_at <- function(eta, upper) mean(sapply(studies, function(s) {
    f <- masses(plogis(qlogis(s$p) + eta))
    k <- seq_along(f) - 1
    sum(f[if (upper) k > s$events else k < s$events]) + share * f[s$events + 1]
  }))
  theta <- function(eta)
    sum(sapply(studies, function(s) sum(plogis(qlogis(s$p) + eta)))) / expected
  limit <- function(tail, upper) {
    ends <- c(-25, 25)
    side <- if (upper) -25 else 25
    if (tail_at(side, upper) > tail)
      return(if (upper) 0 else sum(sapply(studies, function(s) length(s$p))) / expected)
    theta(uniroot(function(eta) log_odds(tail_at(eta, upper)) - log_odds(tail), c(-14, 14),
                  tol = 1e-13, extendInt = "no")$root)
  }
  observed <- sum(sapply(studies, function(s) s$events))
  p <- min(1, 2 * min(tail_at(0, TRUE), tail_at(0, FALSE)))
  limits <- c(limits, paste(c(name, sprintf("%.15g", c(observed / expected, limit(0.025, TRUE),
    limit(0.025, FALSE), limit(0.001, TRUE), limit(0.001, FALSE), p))), collapse = ","))
  for (j in seq_along(studies))
    lines <- c(lines, paste(name, j, studies[[j]]$events, sprintf("%.6f", studies[[j]]$p),
                            sep = ","))
}
writeLines(lines, file.path(folder, "ratio_risks.csv"))
writeLines(limits, file.path(folder, "ratio_limits.csv"))

p <- c(signif(runif(25), 4), 0.04, 0.04, 0.001, 1e-12, 1, 1)
writeLines(c("P,Q", sprintf("%.15g,%.15g", p, p.adjust(p, "BH"))),
           file.path(folder, "false_discovery.csv"))
