# Chains of every kind, and how they are to be judged.
#   Rscript verdicts.R        (writes data/verdict_draws.csv and data/verdicts.csv)
#
# The command and the report page judge by the same rules, docs/chains.md, and the tests of both read
# these files. Each verdict below is written down as the rules say it for chains that are made so; R's
# package posterior checks that the figures of the judged draws are on the intended side of the
# thresholds, and well away from them.
suppressMessages(library(posterior))
RNGkind("Mersenne-Twister", "Inversion", "Rejection")
set.seed(20231114)
script <- sub("^--file=", "", grep("^--file=", commandArgs(FALSE), value = TRUE))
folder <- file.path(dirname(script), "data")

# A chain is a matrix of draws by two coefficients.
chain <- function(n, shift = 0, rho = 0) {
  one <- function() if (rho == 0) rnorm(n) else as.numeric(arima.sim(list(ar = rho), n))
  cbind(one() + shift, one())
}
chains <- function(m, n, ...) lapply(seq_len(m), function(k) chain(n, ...))
changed <- function(chains, k, change) { chains[[k]] <- change(chains[[k]]); chains }
constant <- function(x) { x[, 2] <- 0.5; x }
with_draw <- function(value) function(x) { x[5, 2] <- value; x }

# The worst figures of chains: largest R-hat, smallest effective sample size.
worst <- function(x) {
  figures <- vapply(1:2, function(j) {
    draws <- do.call(cbind, lapply(x, function(one) one[, j]))
    suppressWarnings(c(rhat(draws), min(ess_bulk(draws), ess_tail(draws))))
  }, numeric(2))
  c(rhat = max(figures[1, ]), size = min(figures[2, ]))
}
# Draws again until the figures are well on their side of the thresholds.
until <- function(draw, is_meant) {
  repeat {
    x <- draw()
    if (is_meant(worst(x))) return(x)
  }
}
passes <- function(figures) figures[["rhat"]] < 1.008 && figures[["size"]] > 420
lacks_draws <- function(figures) figures[["rhat"]] < 1.008 && figures[["size"]] < 380

good <- until(function() chains(4, 150), passes)
single <- until(function() chains(1, 700), passes)[[1]]
seeds <- until(function() chains(3, 250), passes)
tail_apart <- rbind(good[[2]], chain(30, shift = 8))

# Name, chains, estimating equations, verdict, numbers of the judged chains, draws of each, whether
# longer ones are cut, and "later=first" for each chain that repeats another one.
cases <- list()
add <- function(name, x, verdict, judged = seq_along(x), draws = nrow(x[[1]]), cut = FALSE,
                repeated = character(), equations = FALSE) {
  cases[[name]] <<- list(x = x, verdict = verdict, judged = judged, draws = draws, cut = cut,
                         repeated = repeated, equations = equations)
}
add("several", good, "converged")
add("one_apart", changed(good, 3, function(x) x + cbind(rep(1, nrow(x)), 0)), "not_converged")
add("all_slow", until(function() chains(4, 75), lacks_draws), "too_few_draws")
add("single", list(single), "no_sign_against")
add("single_short", until(function() chains(1, 300), lacks_draws), "too_few_draws")
add("single_drifting", list(single + cbind(seq_len(700) / 200, 0)), "not_converged")
add("repeated", list(seeds[[1]], seeds[[1]], seeds[[2]], seeds[[3]]), "converged",
    judged = c(1, 3, 4), repeated = "2=1")
add("all_repeated", list(single, single, single), "no_sign_against",
    judged = 1, repeated = c("2=1", "3=1"))
add("repeated_and_shorter", list(seeds[[1]][1:40, ], seeds[[2]], seeds[[1]], seeds[[3]]), "converged",
    judged = 2:4, draws = 250, repeated = "1=3")
add("one_coefficient_alike", changed(good, 2, function(x) cbind(good[[1]][, 1], x[, 2])), "converged")
add("seven_draws", chains(4, 7, shift = 1), "cannot_be_told")
add("eight_draws", changed(chains(4, 8), 1, function(x) x + 30), "not_converged")
add("no_draws", lapply(1:2, function(k) chain(1)[0, ]), "cannot_be_told")
add("constant", lapply(good, constant), "cannot_be_told")
add("constant_and_apart", lapply(cases$one_apart$x, constant), "not_converged")
add("not_a_number", changed(good, 4, with_draw(NaN)), "cannot_be_told")
add("infinite", changed(good, 4, with_draw(-Inf)), "cannot_be_told")
add("different_length", changed(good, 2, function(x) tail_apart), "converged", cut = TRUE)
add("one_too_short", changed(good, 2, function(x) x[1:7, ]), "cannot_be_told", draws = 7, cut = TRUE)
add("one_without_draws", changed(good, 2, function(x) x[0, ]), "cannot_be_told", draws = 0, cut = TRUE)
add("equations", good, "not_fit_for_inference", equations = TRUE)
add("equations_apart", cases$one_apart$x, "not_fit_for_inference", equations = TRUE)
add("equations_short", chains(4, 3), "not_fit_for_inference", equations = TRUE)
add("equations_single", list(single), "not_fit_for_inference", equations = TRUE)
add("equations_without_draws", lapply(1:2, function(k) chain(1)[0, ]), "not_fit_for_inference",
    equations = TRUE)

rounded <- function(x) { x[] <- as.numeric(formatC(x, digits = 4, format = "g", width = 1)); x }
text_of <- function(x) ifelse(is.nan(x), "nan", ifelse(is.infinite(x), ifelse(x > 0, "inf", "-inf"),
                              formatC(x, digits = 4, format = "g", width = 1)))

# The figures of the judged draws, largest R-hat and smallest effective sample size of each coefficient.
figures_of <- function(case) {
  if (case$draws < 8) return(matrix(NaN, 2, 2))
  vapply(1:2, function(j) {
    draws <- vapply(case$judged, function(k) case$x[[k]][seq_len(case$draws), j], numeric(case$draws))
    values <- suppressWarnings(c(rhat(draws), min(ess_bulk(draws), ess_tail(draws))))
    ifelse(is.na(values), NaN, values)
  }, numeric(2))
}

side <- function(case, figures) {
  rhats <- figures[1, ]
  sizes <- figures[2, ]
  switch(case$verdict,
    converged = , no_sign_against = all(rhats < 1.0085, sizes > 415),
    too_few_draws = all(rhats < 1.0085) && any(sizes < 385),
    not_converged = any(rhats > 1.05, na.rm = TRUE),
    cannot_be_told = any(is.nan(figures)) && !any(rhats > 1.01, na.rm = TRUE),
    not_fit_for_inference = case$equations)
}

draws <- "Case,Chain,First,Second"
verdicts <- "Case,Equations,Lengths,Verdict,Judged,Draws,Cut,Repeated"
for (name in names(cases)) {
  case <- cases[[name]]
  case$x <- lapply(case$x, rounded)
  figures <- figures_of(case)
  if (!side(case, figures)) {
    print(figures)
    stop(name, ": the draws are not of the kind that they should be")
  }
  for (k in seq_along(case$x)) {
    x <- case$x[[k]]
    if (nrow(x) > 0) draws <- c(draws, paste(name, k, text_of(x[, 1]), text_of(x[, 2]), sep = ","))
  }
  verdicts <- c(verdicts, paste(name, tolower(case$equations), paste(vapply(case$x, nrow, 1L), collapse = " "),
                                case$verdict, paste(case$judged, collapse = " "), case$draws,
                                tolower(case$cut), paste(case$repeated, collapse = " "), sep = ","))
}
writeLines(draws, file.path(folder, "verdict_draws.csv"))
writeLines(verdicts, file.path(folder, "verdicts.csv"))
