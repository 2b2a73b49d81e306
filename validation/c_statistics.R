# Areas under the ROC curve by pROC.
#   Rscript c_statistics.R FOLDER     (reads jobs.csv, writes auc.csv)
#
# jobs.csv names, one per line, a file with columns response, prediction and any number of columns
# of 0/1 flags. The area is computed over the records of each flag column, and the areas are
# averaged; without flag columns it is computed over all records.
suppressMessages(library(pROC))
folder <- commandArgs(TRUE)[1]
jobs <- read.csv(file.path(folder, "jobs.csv"))
area <- function(response, prediction)
  as.numeric(auc(roc(response, prediction, levels = c(0, 1), direction = "<", quiet = TRUE)))
value <- sapply(jobs$file, function(name) {
  d <- read.csv(file.path(folder, name))
  flags <- d[-(1:2)]
  if (ncol(flags) == 0) area(d$response, d$prediction)
  else mean(sapply(flags, function(f) area(d$response[f == 1], d$prediction[f == 1])))
})
write.csv(data.frame(file = jobs$file, auc = sprintf("%.15g", value)), file.path(folder, "auc.csv"),
          row.names = FALSE)
