# Maximum likelihood fits by R's glm of the four models on the data sets that real_data.R wrote.
#   Rscript fits_logistic.R FOLDER      (reads sets.csv and the data, writes glm.csv)
#
# The records of each model are chosen here by R's own means: complete cases, and P = 0 for the
# last. The Z columns are the X columns in reverse order, with 0 in place of a missing cell.
folder <- commandArgs(TRUE)[1]
sets <- read.csv(file.path(folder, "sets.csv"))
lines <- "set,block,column,estimate,error"
fit <- function(set, block, response, x) {
  d <- data.frame(response, x)
  m <- glm(response ~ ., binomial, d, epsilon = 1e-15, maxit = 100)
  # vcov() uses weights one step behind the coefficients, so the fit starts once more at them.
  m <- suppressWarnings(glm(response ~ ., binomial, d, start = coef(m), epsilon = 1e-15,
                            maxit = 100))
  stopifnot(max(abs(crossprod(model.matrix(m), d$response - fitted(m)))) < 1e-8)
  lines <<- c(lines, sprintf("%s,%s,%d,%.15g,%.15g", set, block, seq_along(coef(m)) - 1L, coef(m),
                             sqrt(diag(vcov(m)))))
}
for (set in sets$name[sets$kind == "logistic"]) {
  d <- read.csv(file.path(folder, paste0(set, ".csv")))
  x <- d[-(1:3)]
  z <- rev(x)
  z[is.na(z)] <- 0
  complete <- complete.cases(x)
  home <- complete & d$p == 0
  fit(set, "[P|X]", d$p[complete], x[complete, ])
  fit(set, "[Y|Z]", d$y, z)
  fit(set, "[Y|X]", d$y[complete], x[complete, ])
  fit(set, "[Y|X;P=0]", d$y[home], x[home, ])
}
writeLines(lines, file.path(folder, "glm.csv"))
