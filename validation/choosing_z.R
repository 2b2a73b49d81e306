# Multiple imputation by chained equations on the data files that choosing_z.py wrote.
#   Rscript choosing_z.R FOLDER      (reads files.csv and the data it names, writes mice.csv)
#
# Each X is imputed by logistic regression on Y, P, all other X and all Z; the model of the outcome
# is fitted to the records with P = 0 of each imputed table, the fits are pooled by Rubin's rules.
suppressPackageStartupMessages(library(mice))
folder <- commandArgs(TRUE)[1]
files <- read.csv(file.path(folder, "files.csv"), colClasses = c("character", "integer"))
lines <- "file,column,estimate,error"
for (i in seq_len(nrow(files))) {
  d <- read.csv(file.path(folder, files$file[i]))[-(1:2)]
  names(d)[2] <- "P"
  for (name in grep("^X", names(d), value = TRUE)) d[[name]] <- factor(d[[name]], levels = 0:1)
  imputed <- mice(d, m = 5, maxit = 5, method = "logreg", seed = files$seed[i], printFlag = FALSE)
  x <- grep("^X", names(d), value = TRUE)
  model <- as.formula(paste("Y ~", paste(x, collapse = " + ")))
  fits <- lapply(seq_len(imputed$m), function(k) {
    whole <- complete(imputed, k)
    stopifnot(!anyNA(whole))
    glm(model, binomial, whole[whole$P == 0, ])
  })
  pooled <- summary(pool(fits))
  lines <- c(lines, sprintf("%s,%d,%.15g,%.15g", files$file[i], seq_along(x), pooled$estimate[-1],
                            pooled$std.error[-1]))
}
writeLines(lines, file.path(folder, "mice.csv"))
cat(as.character(packageVersion("mice")), "\n")
