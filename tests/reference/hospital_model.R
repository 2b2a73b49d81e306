# Random intercepts of hospitals with lme4, and marginal likelihoods with integrate.
#   Rscript hospital_model.R   (writes data/hospital_model_data.csv, data/hospital_model.csv,
#                               data/hospital_model_modes.csv, data/hospital_model_marginals.csv)
#
# Outcomes are grouped: so many patients of a hospital with the same log-odds, so many events.
suppressMessages(library(lme4))
set.seed(20150067)
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")

# mu, gamma and tau that the outcomes are drawn with; hospitals; mean number of patients in a group.
sets <- list(
  ordinary = c(mu = 0.1, gamma = 0, tau = 0.3, hospitals = 60, patients = 12),
  small    = c(mu = -0.2, gamma = 0, tau = 0.6, hospitals = 25, patients = 2),
  large    = c(mu = 0, gamma = 0, tau = 0.12, hospitals = 30, patients = 250),
  volume   = c(mu = 0.05, gamma = -0.25, tau = 0.25, hospitals = 80, patients = 10),
  none     = c(mu = 0.1, gamma = 0, tau = 0, hospitals = 30, patients = 8))
rows <- "Set,Hospital,Covariate,LogOdds,Patients,Events"
fits <- "Set,Model,Mu,Gamma,Tau"
modes <- "Set,Hospital,Mode"
marginals <- "Set,Mu,Tau,Difference"
for (name in names(sets)) {
  s <- as.list(sets[[name]])
  data <- expand.grid(group = 1:6, hospital = seq_len(s$hospitals))
  size <- rlnorm(s$hospitals, 0, 0.8)
  data$patients <- 1 + rpois(nrow(data), s$patients * size[data$hospital])
  data$offset <- round(rnorm(nrow(data), -2, 1), 4)
  cases <- tapply(data$patients, data$hospital, sum)
  x <- log(cases)
  x <- round(x - sum(cases * x) / sum(cases), 6)
  data$x <- x[data$hospital]
  effect <- s$mu + s$gamma * x + rnorm(s$hospitals, 0, s$tau)
  data$events <- rbinom(nrow(data), data$patients, plogis(data$offset + effect[data$hospital]))
  # Outcomes as even as they can be: the best SD is 0.
  if (name == "none")
    data$events <- round(data$patients * plogis(data$offset + 0.1))
  rows <- c(rows, sprintf("%s,%d,%.6f,%.4f,%d,%d", name, data$hospital, data$x, data$offset,
                          data$patients, data$events))
  control <- glmerControl(optimizer = "bobyqa", tolPwrss = 1e-13,
                          optCtrl = list(rhobeg = 2e-2, rhoend = 1e-10, maxfun = 1e5))
  fit <- function(formula) suppressMessages(glmer(formula, data, binomial, nAGQ = 15,
                                                  offset = offset, control = control))
  plain <- fit(cbind(events, patients - events) ~ 1 + (1 | hospital))
  tau <- function(m) as.numeric(getME(m, "theta"))
  fits <- c(fits, sprintf("%s,plain,%.12g,0,%.12g", name, fixef(plain)[1], tau(plain)))
  modes <- c(modes, sprintf("%s,%d,%.12g", name, seq_len(s$hospitals),
                            ranef(plain)$hospital[, 1]))
  if (name == "volume") {
    by <- fit(cbind(events, patients - events) ~ x + (1 | hospital))
    fits <- c(fits, sprintf("%s,volume,%.12g,%.12g,%.12g", name, fixef(by)[1], fixef(by)[2],
                            tau(by)))
  }
  # The logarithm of the marginal likelihood less that with the same mu and without differences.
  for (at in list(c(0.1, 0.2), c(-0.3, 0.7), c(0, 0.02))) {
    difference <- sum(sapply(split(data, data$hospital), function(d) {
      likelihood <- function(u) sapply(u, function(v)
        sum(d$events * v - d$patients * (log1p(exp(d$offset + at[1] + v)) -
                                         log1p(exp(d$offset + at[1])))))
      mode <- optimize(function(u) likelihood(u) - u^2 / 2 / at[2]^2, c(-6, 6), maximum = TRUE,
                       tol = 1e-10)$maximum
      width <- min(at[2], 1) * 12
      log(integrate(function(u) exp(likelihood(u)) * dnorm(u, 0, at[2]), mode - width, mode + width,
                    rel.tol = 1e-12, subdivisions = 2000)$value)
    }))
    marginals <- c(marginals, sprintf("%s,%g,%g,%.14g", name, at[1], at[2], difference))
  }
}
writeLines(rows, file.path(folder, "hospital_model_data.csv"))
writeLines(fits, file.path(folder, "hospital_model.csv"))
writeLines(modes, file.path(folder, "hospital_model_modes.csv"))
writeLines(marginals, file.path(folder, "hospital_model_marginals.csv"))
