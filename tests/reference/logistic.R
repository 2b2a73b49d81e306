# Maximum likelihood fit of data/small_regression.csv by R's glm (no prior).
#   Rscript logistic.R      (writes data/logistic.csv)
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")
d <- read.csv(file.path(folder, "small_regression.csv"))
m <- glm(Y ~ 0 + X0 + X1 + X2 + X3, binomial, d, epsilon = 1e-15, maxit = 100)
# vcov() uses the weights one step behind the coefficients, so the fit is started once more at them.
m <- glm(formula(m), binomial, d, start = coef(m), epsilon = 1e-15, maxit = 100)
stopifnot(m$converged || max(abs(crossprod(model.matrix(m), d$Y - fitted(m)))) < 1e-10)
lines <- sprintf("%s,%.13g,%.13g", names(coef(m)), coef(m), sqrt(diag(vcov(m))))
writeLines(c("Column,Estimate,ModelError", lines), file.path(folder, "logistic.csv"))
