# Reads every folder of folders.csv with share/hovar/hovar.R: the chains, the error and the warnings
# must be those of the table. Called by run.sh, in the folder that holds share and tests, with the
# folder in which make_folders.py has made them, and with one in which the command has run three chains
# and then two.
source("share/hovar/hovar.R")
folders <- commandArgs(trailingOnly = TRUE)[1]
command <- commandArgs(trailingOnly = TRUE)[2]
cases <- read.csv("tests/readers/folders.csv", colClasses = "character", na.strings = character(0))
stopifnot(nrow(cases) > 40)
faults <- 0
fault <- function(...) {
  cat("FAULT: ", ..., "\n", sep = "")
  faults <<- faults + 1
}

# What a call gives: its value, its error and its warnings.
outcome <- function(call) {
  told <- character(0)
  error <- ""
  value <- withCallingHandlers(
    tryCatch(call, error = function(fault) { error <<- conditionMessage(fault); NULL }),
    warning = function(one) {
      told <<- c(told, conditionMessage(one))
      invokeRestart("muffleWarning")
    })
  list(value = value, error = error, told = told)
}

first_draws <- function(draws) paste(substring(sprintf("%.0f", draws[1, , 1]), 1, 6), collapse = ",")

for (i in seq_len(nrow(cases))) {
  case <- cases[i, ]
  got <- outcome(hovar_chains(file.path(folders, i, case$folder)))
  chains <- if (is.null(got$value)) "" else first_draws(got$value)
  told <- paste(got$told, collapse = "")
  holds <- function(text, part) part == "" || grepl(part, text, fixed = TRUE, useBytes = TRUE)
  if (chains != case$chains) fault(case$case, ": chains ", chains, " ", got$error)
  if ((got$error == "") != (case$error == "") || !holds(got$error, case$error)) {
    fault(case$case, ": error ", got$error)
  }
  if (length(got$told) != (case$warning != "") || !holds(told, case$warning)) {
    fault(case$case, ": warning ", told)
  }
  if (grepl("[\001-\037\177]", paste(got$error, told), useBytes = TRUE)) {
    fault(case$case, ": control characters")
  }
}
cat("ok", nrow(cases), "folders\n")

left <- which(cases$case == "chains left from a command with more")
got <- outcome(hovar_chains(file.path(folders, left), all_chains = TRUE))
if (length(got$told) > 0 || first_draws(got$value) != "1,2,3,10") fault("all_chains")
cat("ok all_chains\n")

two <- outcome(hovar_chains(command))
three <- outcome(hovar_chains(command, all_chains = TRUE))
if (length(two$told) != 1 || !grepl("left out chain-3 of an earlier run", two$told)) fault("chain-3")
if (length(three$told) > 0 || !identical(dim(three$value), c(10L, 3L, 11L))) fault("three chains")
if (!identical(as.numeric(two$value), as.numeric(three$value[, 1:2, ]))) fault("two chains")
cat("ok chains of the command\n")

for (reader in c("coefficients", "tables", "predictions", "c_statistics", "summary")) {
  for (kind in c("pipe", "empty", "folder", "missing")) {
    said <- c(pipe = "is not a file of data but a device", empty = "is empty",
      folder = "is not a file of data but a folder", missing = "there is no such file")[[kind]]
    if (reader == "summary" && kind == "empty") next  # a run without steps leaves such a file
    got <- outcome(get(paste0("hovar_", reader))(file.path(folders, "kinds", kind)))
    if (!grepl(paste0(kind, ".*", said), got$error) || length(got$told) > 0) {
      fault(reader, " of ", kind, ": ", got$error, " ", got$told)
    }
  }
}
cat("ok kinds of files\n")
quit(status = if (faults == 0) 0 else 1)
