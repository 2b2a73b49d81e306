# Reads what Hovar writes into R.
#
#     source("hovar.R")
#     chains <- hovar_chains("results", coefficients = "results/coefficients.csv")
#     posterior::summarise_draws(chains)
#
# hovar_chains        draws of the chains, for the package posterior
# hovar_coefficients  estimates and standard errors of the five models
# hovar_tables        how well each Z tells its X
# hovar_predictions   individual or hospital predictions
# hovar_c_statistics  C-statistics
# hovar_summary       Summary.csv
#
# All need base R only, but for hovar_chains, which needs posterior. Tables are data frames. Names,
# keys and hospital IDs are text, also where they look like numbers; their bytes are taken for UTF-8.
# A value that the program left empty is NA.

# The draws of one or several chains as an array of the class draws_array, with the dimensions
# iteration, chain and variable.
#
# folders       Folders with the results of one chain each, or one folder with the folders chain-1,
#               chain-2, ... in it, as `hovar --chains` makes them. Chain.csv may lie deeper.
# coefficients  A coefficient file of the same model. Its X names then stand for BetaYX[0],
#               BetaYX[1], ...; the two are joined by position. Names that occur twice get a number.
#
# Iterations are counted from 1; the burn-in is not in the files. Chains must have the same columns
# and the same number of draws.
hovar_chains <- function(folders, coefficients = NULL) {
  files <- unlist(lapply(folders, hovar_chain_files))
  chains <- lapply(files, function(file) {
    as.matrix(hovar_table(file, classes = "numeric")[, -1, drop = FALSE])
  })
  for (i in seq_along(chains)) {
    if (!identical(dim(chains[[i]]), dim(chains[[1]])) ||
        !identical(colnames(chains[[i]]), colnames(chains[[1]]))) {
      stop(files[i], " has other columns or another number of draws than ", files[1])
    }
  }
  variables <- colnames(chains[[1]])
  if (!is.null(coefficients)) {
    names <- make.unique(hovar_coefficient_cells(coefficients)[[1]])
    if (length(names) != length(variables)) {
      stop(coefficients, " has ", length(names), " variables, ", files[1], " has ", length(variables))
    }
    variables <- names
  }
  draws <- array(unlist(chains), c(dim(chains[[1]]), length(chains)))
  draws <- aperm(draws, c(1, 3, 2))
  dimnames(draws) <- list(iteration = NULL, chain = NULL, variable = variables)
  posterior::as_draws_array(draws)
}

# The estimates of all models, one row per model and variable: variable (X name), z_variable, model
# ("[Y|X,P=0]" and so on), estimate, mse and ese (model-based and empirical standard error), in
# log-odds.
hovar_coefficients <- function(file) {
  cells <- hovar_coefficient_cells(file)
  models <- c("[P|X]", "[Y|Z]", "[Y|X]", "[Y|X,P=0]", "[Y|X,P=0,MCMC]")
  blocks <- lapply(seq_along(models), function(i) {
    data.frame(variable = cells[[1]], z_variable = cells[[2]], model = models[i],
      estimate = cells[[4 + 3 * i]], mse = cells[[5 + 3 * i]], ese = cells[[6 + 3 * i]])
  })
  do.call(rbind, blocks)
}

# The shares of X = 0 and X = 1 for Z = 0 and for Z = 1, one row per variable; NA for the intercept.
hovar_tables <- function(file) {
  cells <- hovar_coefficient_cells(file)[1:6]
  names(cells) <- c("variable", "z_variable", "x0_z0", "x1_z0", "x0_z1", "x1_z1")
  cells
}

# Individual or hospital predictions with the names of their header, such as `E[Y|X,P=0]-MCMC`.
hovar_predictions <- function(file) {
  header <- names(read.csv(file, check.names = FALSE, colClasses = "character", nrows = 1))
  classes <- ifelse(header %in% c("Key", "Hospital ID"), "character", "numeric")
  hovar_table(file, classes = classes)
}

# The C-statistics as a named vector; NA where there was no pair to compare.
hovar_c_statistics <- function(file) {
  table <- hovar_table(file, classes = c("character", "numeric"))
  values <- table[[2]]
  names(values) <- table[[1]]
  values[values == -1] <- NA
  values
}

# Mean, variance and acceptance of each variable of the sampler. NULL for the empty file of a run
# without steps.
hovar_summary <- function(file) {
  if (file.size(file) == 0) NULL else hovar_table(file, classes = c("character", rep("numeric", 3)))
}

# ---- Used by the functions above ----

# The chain file of a folder, or those of its folders chain-1, chain-2, ... in the order of numbers.
hovar_chain_files <- function(folder) {
  numbered <- list.files(folder, "^chain-[0-9]+$")
  if (length(numbered) > 0) {
    numbered <- numbered[order(as.numeric(sub("chain-", "", numbered)))]
    return(unlist(lapply(file.path(folder, numbered), hovar_chain_files)))
  }
  files <- list.files(folder, "^Chain\\.csv$", recursive = TRUE, full.names = TRUE)
  if (length(files) != 1) {
    stop(folder, " has ", length(files), " files named Chain.csv; one was expected")
  }
  files
}

# The cells of the coefficient file without its header. A carriage return that a data file with such
# line ends left in a name is taken out.
hovar_coefficient_cells <- function(file) {
  text <- readChar(file, file.size(file), useBytes = TRUE)
  text <- gsub("\r", "", text, fixed = TRUE, useBytes = TRUE)
  hovar_table(text = text, classes = c("character", "character", rep("numeric", 19)), header = FALSE,
    skip = 1)
}

# Only cells of numbers can be NA: a hospital may be called NA.
hovar_table <- function(..., classes) {
  read.csv(..., check.names = FALSE, colClasses = classes, na.strings = character(0), fill = FALSE,
    encoding = "UTF-8")
}
