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
# A value that the program left empty is NA. A file that cannot be read, or is not what it should be, is
# an error that names it.

# The draws of one or several chains as an array of the class draws_array, with the dimensions
# iteration, chain and variable.
#
# folders       Folders with the results of one chain each, or one folder with the folders chain-1,
#               chain-2, ... in it, as `hovar --chains` makes them. Chain.csv may lie deeper.
# coefficients  A coefficient file of the same model. Its X names then stand for BetaYX[0],
#               BetaYX[1], ...; the two are joined by position. Names that occur twice get a number.
# all_chains    TRUE reads every folder chain-1, chain-2, ... also those that an earlier run with more
#               chains has left. Otherwise these are left out, and a warning names them: the file
#               chains.json, which `hovar --chains` writes, says how many belong together.
#
# Iterations are counted from 1; the burn-in is not in the files. Chains must have the same columns
# and the same number of draws.
hovar_chains <- function(folders, coefficients = NULL, all_chains = FALSE) {
  files <- unlist(lapply(folders, hovar_chain_files, all_chains))
  chains <- lapply(files, hovar_chain_draws)
  for (i in seq_along(chains)) {
    if (!identical(dim(chains[[i]]), dim(chains[[1]])) ||
        !identical(colnames(chains[[i]]), colnames(chains[[1]]))) {
      hovar_stop(files[i], " has other columns or another number of draws than ", hovar_shown(files[1]))
    }
  }
  variables <- colnames(chains[[1]])
  if (!is.null(coefficients)) {
    names <- make.unique(hovar_coefficient_cells(coefficients)[[1]])
    if (length(names) != length(variables)) {
      hovar_stop(coefficients, " has ", length(names), " variables, ", hovar_shown(files[1]), " has ",
        length(variables))
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
  header <- names(hovar_table(file, classes = "character", nrows = 1))
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
  if (hovar_file_size(file) == 0) return(NULL)
  hovar_table(file, classes = c("character", rep("numeric", 3)))
}

# ---- Used by the functions above ----

# The chain file of a folder, or those of its folders chain-1, chain-2, ... in the order of numbers.
hovar_chain_files <- function(folder, all_chains) {
  chains <- hovar_numbered_chains(folder)
  if (length(chains) == 0) return(hovar_chain_file(folder))
  count <- if (all_chains) NA else hovar_chain_count(folder)
  if (!is.na(count)) {
    expected <- sprintf("chain-%d", seq_len(count))
    if (!any(chains %in% expected)) {
      hovar_stop(folder, " has none of the chains that its file chains.json names")
    }
    missing <- setdiff(expected, chains)
    if (length(missing) > 0) {
      hovar_warn(folder, " lacks ", hovar_list(missing), ": its file chains.json names ", count, " chains")
    }
    left <- setdiff(chains, expected)
    if (length(left) > 0) {
      hovar_warn(folder, ": left out ", hovar_list(left), " of an earlier run, as its file chains.json names ",
        count, " chains; all_chains reads all")
      chains <- intersect(chains, expected)
    }
  }
  vapply(hovar_below(folder, chains), hovar_chain_file, "", USE.NAMES = FALSE)
}

# The folders chain-1, chain-2, ... in a folder, in the order of their numbers.
hovar_numbered_chains <- function(folder) {
  chains <- grep("^chain-[1-9][0-9]*$", hovar_names(folder), value = TRUE, useBytes = TRUE)
  is_folder <- dir.exists(hovar_below(folder, chains))
  for (other in sort(chains[!is_folder])) {
    hovar_warn(hovar_below(folder, other), " is not a folder and is left out")
  }
  chains <- chains[is_folder]
  chains[order(nchar(chains), chains)]
}

# How many chains belong together by the file chains.json in a folder; NA where that says nothing.
hovar_chain_count <- function(folder) {
  file <- hovar_below(folder, "chains.json")
  if (!isTRUE(hovar_kind(file) == "file")) return(NA)
  hovar_file_size(file)
  connection <- file(file, "rb")
  on.exit(close(connection))
  bytes <- readBin(connection, "raw", 200)
  text <- rawToChar(bytes[cumsum(bytes == 0) == 0])
  count <- regmatches(text, regexec('^\\{"chains": ([1-9][0-9]{0,3})\\}', text, useBytes = TRUE))[[1]]
  if (length(count) == 2) as.integer(count[2]) else NA
}

# The only file Chain.csv in a folder or deeper. Links to folders are not followed: they could lead in
# a circle, or anywhere.
hovar_chain_file <- function(folder) {
  waiting <- folder
  files <- character(0)
  links <- 0
  while (length(waiting) > 0) {
    names <- hovar_names(waiting[1])
    paths <- hovar_below(waiting[1], names)
    is_folder <- dir.exists(paths)
    is_link <- nzchar(Sys.readlink(paths))
    files <- c(files, paths[names == "Chain.csv" & !is_folder])
    links <- links + sum(is_folder & is_link)
    waiting <- c(paths[is_folder & !is_link], waiting[-1])
  }
  if (length(files) != 1) {
    hovar_stop(folder, " has ", length(files), " files named Chain.csv; one was expected",
      if (links > 0) "; links to folders are not followed")
  }
  files
}

# The draws of a chain file, a row for each. A chain that still runs may end within a line.
hovar_chain_draws <- function(file) {
  if (hovar_file_size(file) == 0) hovar_stop(file, " is empty")
  connection <- file(file, "rb")
  on.exit(close(connection))
  seek(connection, hovar_file_size(file) - 1)
  if (!identical(readBin(connection, "raw", 1), charToRaw("\n"))) {
    hovar_stop(file, " ends within a line: its run is not complete")
  }
  table <- hovar_table(file, classes = "numeric")
  if (names(table)[1] != "Step") hovar_stop(file, " is not a chain: its first column is not Step")
  as.matrix(table[, -1, drop = FALSE])
}

# The cells of the coefficient file without its header. A carriage return that a data file with such
# line ends left in a name is taken out.
hovar_coefficient_cells <- function(file) {
  size <- hovar_file_size(file)  # readChar opens the file before it asks for the size
  text <- readChar(file, size, useBytes = TRUE)
  text <- gsub("\r", "", text, fixed = TRUE, useBytes = TRUE)
  hovar_table(file, text = text, classes = c("character", "character", rep("numeric", 19)),
    header = FALSE, skip = 1)
}

# Reads a file, or the text that was read from it. Only cells of numbers can be NA: a hospital may be
# called NA.
hovar_table <- function(file, text, ..., classes) {
  if (hovar_file_size(file) == 0) hovar_stop(file, " is empty")
  source <- if (missing(text)) list(file = file) else list(text = text)
  tryCatch(
    withCallingHandlers(
      do.call(read.csv, c(source, list(..., check.names = FALSE, colClasses = classes,
        na.strings = character(0), fill = FALSE, encoding = "UTF-8"))),
      warning = function(one) {
        if (grepl("embedded nul", conditionMessage(one))) stop("it holds the character NUL")
      }),
    error = function(fault) hovar_stop(file, ": ", conditionMessage(fault)))
}

# The names in a folder.
hovar_names <- function(folder) {
  kind <- hovar_kind(folder)
  if (is.na(kind)) hovar_stop(folder, ": there is no such folder")
  if (kind != "folder") hovar_stop(folder, " is not a folder")
  if (file.access(folder, 5) != 0) hovar_stop(folder, ": no right to read this folder")
  list.files(folder, all.files = TRUE, no.. = TRUE)
}

# The paths of names in a folder. file.path refuses names that are not in the encoding of the locale.
hovar_below <- function(folder, names) {
  if (length(names) == 0) character(0) else paste0(folder, "/", names)
}

# The size of a file that can be read. Anything else is an error: a named pipe would be waited for.
hovar_file_size <- function(file) {
  kind <- hovar_kind(file)
  if (is.na(kind)) hovar_stop(file, ": there is no such file")
  if (kind != "file") hovar_stop(file, " is not a file of data but a ", kind)
  if (file.access(file, 4) != 0) hovar_stop(file, ": no right to read this file")
  file.size(file)
}

# "file", "folder" or "device" (which a named pipe is too), links followed; NA where there is nothing.
# R does not say what a file without a size is, so the system's own command is asked.
hovar_kind <- function(path) {
  if (!file.exists(path)) return(NA)
  if (dir.exists(path)) return("folder")
  if (file.size(path) > 0 || .Platform$OS.type != "unix") return("file")
  if (system2("test", c("-f", shQuote(path.expand(path)))) == 0) "file" else "device"
}

hovar_stop <- function(path, ...) stop(hovar_shown(path), ..., call. = FALSE)

hovar_warn <- function(path, ...) warning(hovar_shown(path), ..., call. = FALSE)

# Names for a message, which is no place for thousands.
hovar_list <- function(names) {
  more <- if (length(names) > 10) paste(" and", length(names) - 10, "more")
  paste0(paste(head(names, 10), collapse = ", "), more)
}

# A path for a message: without characters that would act on a terminal.
hovar_shown <- function(path) {
  odd <- grepl("[\001-\037\177]", path, useBytes = TRUE) || !validUTF8(path)
  if (odd) encodeString(path) else path
}
