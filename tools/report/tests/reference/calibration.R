# Reference values of calibration by tenths and of the C-statistic.
#
#     Rscript calibration.R > calibration.json
#
# needs the Debian packages r-base-core and r-cran-proc.
suppressMessages(library(pROC))
set.seed(7)
number <- function(x) formatC(x, digits = 17, width = 1, format = "g")
numbers <- function(x) paste0("[", paste(number(x), collapse = ","), "]")

# Wilson's interval is the one of prop.test without a correction.
group <- function(rows) {
  interval <- suppressWarnings(prop.test(sum(rows$observed), nrow(rows), correct = FALSE))$conf.int
  values <- c(count = nrow(rows), meanPredicted = mean(rows$predicted), observedRate = mean(rows$observed),
    lower = interval[1], upper = interval[2])
  paste0("{", paste0("\"", names(values), "\":", number(values), collapse = ","), "}")
}
one <- function(predicted, observed) {
  # As read back from six digits.
  predicted <- as.numeric(formatC(predicted, digits = 6, format = "g"))
  tenth <- floor(10 * (rank(predicted) - 0.5) / length(predicted))
  rows <- split(data.frame(predicted, observed), tenth)
  area <- auc(roc(observed, predicted, direction = "<", levels = c(0, 1), quiet = TRUE))
  paste0("{\"predicted\":", numbers(predicted), ",\n\"observed\":", numbers(observed), ",\n\"cStatistic\":",
    number(as.numeric(area)), ",\n\"groups\":[", paste(sapply(rows, group), collapse = ",\n"), "]}")
}
plain <- plogis(rnorm(400, -2, 1.2))
coarse <- round(plogis(rnorm(300, -1, 1)), 1)
studies <- c(
  one(plain, rbinom(400, 1, plain)),
  one(coarse, rbinom(300, 1, coarse)),
  one(plogis(rnorm(123)), rbinom(123, 1, 0.3)),
  one(c(rep(0.02, 80), runif(40)), rbinom(120, 1, 0.2)),
  one(rep(0.25, 40), rep(c(0, 0, 0, 1), 10)),
  one(c(0.1, 0.9, 0.3), c(0, 1, 1))
)
cat("[\n", paste(studies, collapse = ",\n"), "\n]\n", sep = "")
