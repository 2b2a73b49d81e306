# How often Cochran's Q has p < 0.05 when hospitals do not differ: the table of docs/report.md. Expected
# counts are scaled to the observed total, as a fitted model has them. No test reads its output.
#
#     Rscript cochran_size.R        (base R, half a minute)
set.seed(20)
p_value <- function(observed, expected, cases) {
  expected <- expected * sum(observed) / sum(expected)
  y <- observed / expected
  w <- expected / (1 - expected / cases)
  pchisq(sum(w * (y - weighted.mean(y, w))^2), length(y) - 1, lower.tail = FALSE)
}
one_risk <- function(hospitals, draw, risk) {
  cases <- pmax(1, round(draw(hospitals) / risk))
  observed <- rbinom(hospitals, cases, risk)
  if (sum(observed) == 0) 1 else p_value(observed, cases * risk, cases)
}
mixed_risks <- function(hospitals) {
  cases <- round(runif(hospitals, 5, 50) / 0.1)
  hospital <- rep(seq_len(hospitals), cases)
  risk <- rbeta(length(hospital), 0.8, 7.2)  # mean 0.1, standard deviation 0.1
  p_value(tapply(runif(length(risk)) < risk, hospital, sum), tapply(risk, hospital, sum), cases)
}
show <- function(what, hospitals, p) {
  cat(sprintf("%-34s %3d hospitals %5.2f %%\n", what, hospitals, 100 * mean(p < 0.05)))
}
for (hospitals in c(10, 25, 100)) for (risk in c(0.02, 0.1, 0.3)) {
  show(paste("5 to 50, risk", risk), hospitals,
       replicate(20000, one_risk(hospitals, function(k) runif(k, 5, 50), risk)))
}
for (expected in c(0.25, 0.5, 1, 2, 3, 5, 10, 20)) for (hospitals in c(25, 100)) {
  show(paste(expected, "in each"), hospitals,
       replicate(20000, one_risk(hospitals, function(k) rep(expected, k), 0.05)))
}
for (shape in list(c(5, 1.2), c(2, 1.5))) for (hospitals in c(25, 100, 400)) {
  show(paste("lognormal, median", shape[1]), hospitals,
       replicate(20000, one_risk(hospitals, function(k) rlnorm(k, log(shape[1]), shape[2]), 0.05)))
}
for (hospitals in c(25, 100)) show("5 to 50, mixed risks", hospitals, replicate(5000, mixed_risks(hospitals)))
