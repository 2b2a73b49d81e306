# The same data fitted by the R packages gee and geepack, to place the program among them.
#   Rscript gee.R           (after gee.py; writes data/gee_packages.csv)
#
# All solve the same equations for beta once alpha is given; with alpha held at the program's value
# the estimates and the robust (sandwich) errors agree. They differ in what surrounds that:
#   - gee:     phi = sum r^2 / (N - p) as here. alpha divides the sum over unordered pairs by
#              (number of unordered pairs - p), which in ordered pairs is M - 2 p where the program
#              has M - p.
#   - geepack: alpha and phi come from estimating equations of their own: plain means of the
#              products and of r^2, nothing subtracted for the estimated coefficients.
#   - both:    the model-based ("naive") covariance carries the factor phi; the program has none.
suppressMessages({library(gee); library(geepack)})
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")
d <- read.csv(file.path(folder, "small_regression.csv"))
ours <- subset(read.csv(file.path(folder, "gee.csv")), Lambda == 0)
value <- function(name) ours$Estimate[ours$Column == name]
alpha <- value("alpha")
phi <- value("phi")
columns <- ours[startsWith(ours$Column, "X"), ]
model <- Y ~ 0 + X0 + X1 + X2 + X3
n <- table(d$Hospital)

# Fits with alpha held at the program's value.
held <- matrix(alpha, max(n), max(n))
diag(held) <- 1
invisible(capture.output(suppressMessages(
  g <- gee(model, Hospital, d, family = binomial, corstr = "fixed", R = held, tol = 1e-13,
           maxiter = 200))))
p <- geeglm(model, binomial, d, id = Hospital, corstr = "fixed",
            zcor = rep(alpha, sum(n * (n - 1) / 2)),
            control = geese.control(epsilon = 1e-13, maxit = 200))
stopifnot(max(abs(coef(g) - columns$Estimate)) < 1e-8,
          max(abs(coef(p) - columns$Estimate)) < 1e-8,
          max(abs(sqrt(diag(g$robust.variance)) - columns$EmpiricalError)) < 1e-8,
          max(abs(sqrt(diag(vcov(p))) - columns$EmpiricalError)) < 1e-8,
          max(abs(sqrt(diag(g$naive.variance) / g$scale) - columns$ModelError)) < 1e-8,
          max(abs(sqrt(diag(p$geese$vbeta.naiv)/summary(p)$dispersion[1, 1])
                  - columns$ModelError)) < 1e-8)

# Fits with each package's own alpha.
invisible(capture.output(suppressMessages(
  g_own <- gee(model, Hospital, d, family = binomial, corstr = "exchangeable", tol = 1e-13,
               maxiter = 200))))
p_own <- geeglm(model, binomial, d, id = Hospital, corstr = "exchangeable",
                control = geese.control(epsilon = 1e-13, maxit = 200))

lines <- "Fit,Column,Estimate,ModelErrorWithoutPhi,EmpiricalError"
add <- function(fit, beta, model_error, robust_error, a, s) {
  f <- function(v) sprintf("%.10g", v)
  lines <<- c(lines, paste(fit, names(beta), f(beta), f(model_error), f(robust_error), sep = ","),
              paste0(fit, ",alpha,", f(a), ",,"), paste0(fit, ",phi,", f(s), ",,"))
}
add("gee fixed", coef(g), sqrt(diag(g$naive.variance) / g$scale), sqrt(diag(g$robust.variance)),
    alpha, g$scale)
add("gee own", coef(g_own), sqrt(diag(g_own$naive.variance) / g_own$scale),
    sqrt(diag(g_own$robust.variance)), g_own$working.correlation[1, 2], g_own$scale)
geepack_row <- function(fit, m, a) {
  s <- summary(m)$dispersion[1, 1]
  add(fit, coef(m), sqrt(diag(m$geese$vbeta.naiv) / s), sqrt(diag(vcov(m))), a, s)
}
geepack_row("geepack fixed", p, alpha)
geepack_row("geepack own", p_own, p_own$geese$alpha)
writeLines(lines, file.path(folder, "gee_packages.csv"))
