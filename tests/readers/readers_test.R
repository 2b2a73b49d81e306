# Reads the files of the examples with share/hovar/hovar.R and compares them with each other, with the
# data file and with their own text. Called by run.sh, from the project's folder, with the folder of
# the runs.
source("share/hovar/hovar.R")
suppressMessages(library(posterior))
run <- commandArgs(trailingOnly = TRUE)[1]
quickstart <- function(...) file.path(run, "quickstart", ...)
gee <- function(...) file.path(run, "gee", ...)
fails <- function(expression, pattern) {
  message <- tryCatch({ expression; "" }, error = conditionMessage)
  if (!grepl(pattern, message)) stop("expected an error like '", pattern, "', got '", message, "'")
}
written <- function(...) {
  file <- tempfile()
  cat(..., file = file, sep = "")
  file
}
test <- function(name, expression) {
  force(expression)
  cat("ok", name, "\n")
}
coefficient_file <- quickstart("results", "coefficients.csv")
data <- read.csv(quickstart("data.csv"), check.names = FALSE)

test("One chain has the draws of its file", {
  chains <- hovar_chains(quickstart("results"), coefficient_file)
  stopifnot(is_draws_array(chains), dim(chains) == c(100, 1, 11))
  lines <- strsplit(readLines(quickstart("results", "mcmc", "Chain.csv")), ",")
  stopifnot(lines[[1]][3] == "BetaYX[1]", variables(chains)[1:2] == c("XIntercept", "XEmergency"))
  for (draw in c(1, 37, 100)) {
    stopifnot(identical(as.numeric(chains[draw, 1, ]), as.numeric(lines[[draw + 1]][-1])))
  }
})

test("Means and variances of the draws are those of the summary and of the fifth block", {
  draws <- as_draws_matrix(hovar_chains(quickstart("results"), coefficient_file))
  summary <- hovar_summary(quickstart("results", "mcmc", "Summary.csv"))
  stopifnot(summary$Variable[1:2] == c("ImputeData", "BetaYX[0]"))
  all_close <- function(a, b) stopifnot(abs(a - b) < 1e-5 * (abs(b) + 0.1))
  all_close(colMeans(draws), summary$Mean[-1])
  all_close(apply(draws, 2, var), summary$Variance[-1])
  estimates <- hovar_coefficients(coefficient_file)
  fifth <- estimates[estimates$model == "[Y|X,P=0,MCMC]", ]
  stopifnot(fifth$variable == variables(draws), is.na(estimates$ese))
  all_close(colMeans(draws), fifth$estimate)
  all_close(apply(draws, 2, sd), fifth$mse)
})

test("Without a coefficient file columns keep their names", {
  stopifnot(variables(hovar_chains(quickstart("results")))[c(1, 11)] == c("BetaYX[0]", "BetaYX[10]"))
})

test("Several chains stand in the order of their numbers", {
  together <- hovar_chains(quickstart("several"), coefficient_file)
  stopifnot(dim(together) == c(100, 3, 11))
  listed <- hovar_chains(quickstart("several", c("chain-1", "chain-2", "chain-10")), coefficient_file)
  stopifnot(identical(together, listed))
  for (i in 1:3) {
    alone <- hovar_chains(quickstart("several", c("chain-1", "chain-2", "chain-10")[i]), coefficient_file)
    stopifnot(identical(as.numeric(together[, i, ]), as.numeric(alone)))
  }
  stopifnot(!identical(as.numeric(together[, 1, ]), as.numeric(together[, 2, ])))
  stopifnot(summarise_draws(together)$rhat < 1.2)
})

test("Chains that do not fit each other or the coefficient file are refused", {
  fails(hovar_chains(c(quickstart("results"), gee("results"))), "other columns or another number of draws")
  fails(hovar_chains(gee("results"), coefficient_file), "11 variables")
  fails(hovar_chains(run), "8 files named Chain.csv")
  fails(hovar_chains(tempdir()), "0 files named Chain.csv")
})

test("A run without steps has no draws and no summary", {
  stopifnot(dim(hovar_chains(quickstart("no_steps"), coefficient_file)) == c(0, 1, 11))
  stopifnot(is.null(hovar_summary(quickstart("no_steps", "mcmc", "Summary.csv"))))
})

test("The tables are the shares of X in the data", {
  tables <- hovar_tables(coefficient_file)
  stopifnot(nrow(tables) == 11, is.na(unlist(tables[1, 3:6])))
  stopifnot(abs(tables$x0_z1 + tables$x1_z1 - 1)[-1] < 1e-5)
  known <- !is.na(data$XEmergency)
  shares <- tapply(data$XEmergency[known], data$ZEmergency[known], mean)
  emergency <- tables[tables$variable == "XEmergency", ]
  stopifnot(emergency$z_variable == "ZEmergency")
  stopifnot(abs(c(emergency$x1_z0, emergency$x1_z1) - shares) < 1e-6)
})

test("With generalized estimating equations the standard errors stand where they belong", {
  estimates <- hovar_coefficients(gee("drawn", "coefficients.csv"))
  fifth <- estimates$model == "[Y|X,P=0,MCMC]"
  stopifnot(is.na(estimates$mse[fifth]), estimates$ese[fifth] > 0)
  stopifnot(estimates$mse[!fifth] > 0, estimates$ese[!fifth] > 0)
  stopifnot(table(estimates$model) == sum(fifth))
})

test("Hospital predictions are the means of individual ones", {
  individual <- hovar_predictions(quickstart("results", "individual.csv"))
  hospitals <- hovar_predictions(quickstart("results", "hospital.csv"))
  stopifnot(individual$Key == data[[1]], individual$`Hospital ID` == data[[2]], individual$Y == data[[3]])
  stopifnot(is.character(individual$Key), sapply(individual[-(1:2)], is.numeric))
  stopifnot(hospitals$`Nr. records` == table(individual$`Hospital ID`)[hospitals$`Hospital ID`])
  for (column in setdiff(names(individual), c("Key", "Hospital ID"))) {
    means <- tapply(individual[[column]], individual$`Hospital ID`, mean, na.rm = TRUE)
    stopifnot(abs(hospitals[[column]] - means[hospitals$`Hospital ID`]) < 1e-5)
  }
})

test("The C-statistic is that of the individual predictions", {
  individual <- hovar_predictions(quickstart("results", "individual.csv"))
  statistics <- hovar_c_statistics(quickstart("results", "cstatistics.csv"))
  pairs <- outer(individual$`E[Y|Z]`[individual$Y == 1], individual$`E[Y|Z]`[individual$Y == 0], "-")
  stopifnot(length(statistics) == 6, abs(statistics["E[Y|Z]"] - mean((sign(pairs) + 1) / 2)) < 1e-6)
})

test("A C-statistic without pairs is NA", {
  file <- written("Estimate,C-Statistics\nE[Y|Z],0.75\n\"E[Y|X,P=0]\",-1\n")
  stopifnot(identical(hovar_c_statistics(file), c(`E[Y|Z]` = 0.75, `E[Y|X,P=0]` = NA)))
})

test("Odd cells are read as they are meant", {
  table <- hovar_predictions(written("Key,Hospital ID,P\n",
    "NA,007,nan\n", "\"a \"\"b\"\"\",NA,inf\n", " c ,\"x,\ny\",\n", "#d,NULL,-inf\n", "'e',1e3,1e-05\n"))
  stopifnot(identical(table$Key, c("NA", "a \"b\"", " c ", "#d", "'e'")))
  stopifnot(identical(table$`Hospital ID`, c("007", "NA", "x,\ny", "NULL", "1e3")))
  stopifnot(identical(table$P, c(NaN, Inf, NA, -Inf, 1e-05)))
})

test("Odd names of variables are read as they are meant", {
  lines <- readLines(coefficient_file)
  numbers <- sub("^[^,]*,[^,]*", "", lines[3])
  file <- written(lines[1], "\n", lines[2], "\nX\u00e4,Z1", numbers, "\n\"X,\"\"\n\",NA", numbers,
    "\nX\u00e4,Z3", numbers, "\nX4\r,Z4", numbers, "\n")
  tables <- hovar_tables(file)
  stopifnot(identical(tables$variable, c("XIntercept", "X\u00e4", "X,\"\n", "X\u00e4", "X4")))
  stopifnot(identical(tables$z_variable, c("ZIntercept", "Z1", "NA", "Z3", "Z4")))
  folder <- tempfile()
  dir.create(folder)
  cat("Step,BetaYX[0],BetaYX[1],BetaYX[2],BetaYX[3],BetaYX[4]\n5,1,2,3,4,5\n",
    file = file.path(folder, "Chain.csv"))
  chains <- hovar_chains(folder, file)
  stopifnot(identical(variables(chains), c("XIntercept", "X\u00e4", "X,\"\n", "X\u00e4.1", "X4")))
  stopifnot(identical(as.numeric(chains), c(1, 2, 3, 4, 5)))
})
