# Rank decisions of column elimination against qr and svd.
#   Rscript elimination.R FOLDER COUNT      (reads designs 1..COUNT, writes ranks.csv)
#
# Each design's folder holds data.csv, the program's log and its coefficient file. The columns that
# the log reports as removed are taken away stage by stage, and before and after each stage the rank
# of the 0/1 matrix itself (not of its cross products) is decided by qr (LINPACK, tolerance 1e-7)
# and by the singular values (above 1e-6 of the largest).
arguments <- commandArgs(TRUE)
folder <- arguments[1]
count <- as.integer(arguments[2])
stages <- c("Eliminating Z zero columns", "Eliminating X zero columns",
            "Eliminating dependent Z columns", "Eliminating dependent X columns P = 0")

removed_by_stage <- function(log) {
  out <- list(character(), character(), character(), character())
  stage <- 0
  listing <- FALSE
  for (line in log) {
    if (line %in% stages) { stage <- match(line, stages); listing <- FALSE }
    else if (line == "Eliminating columns:") listing <- TRUE
    else if (startsWith(line, "Number of variables:")) listing <- FALSE
    else if (listing) out[[stage]] <- c(out[[stage]], sub(", .*", "", line))
  }
  out
}
rank_qr <- function(m) qr(m, tol = 1e-7)$rank
rank_svd <- function(m) { d <- svd(m, 0, 0)$d; sum(d > 1e-6 * max(d)) }

rows <- NULL
for (k in seq_len(count)) {
  here <- file.path(folder, sprintf("design%04d", k))
  d <- read.csv(file.path(here, "data.csv"), check.names = FALSE)
  v <- (ncol(d) - 4) / 2
  z <- cbind(1, as.matrix(d[4 + seq_len(v)]))
  x <- cbind(1, as.matrix(d[4 + v + seq_len(v)]))
  slots <- c("ZIntercept", names(d)[4 + seq_len(v)])
  removed <- removed_by_stage(readLines(file.path(here, "out", "analysis.log")))
  kept_names <- as.character(read.csv(file.path(here, "out", "coefficients.csv"))[[2]])
  complete <- complete.cases(d)
  home <- complete & d$P1 == 0

  s0 <- slots
  s1 <- setdiff(s0, removed[[1]]); s2 <- setdiff(s1, removed[[2]])
  s3 <- setdiff(s2, removed[[3]]); s4 <- setdiff(s3, removed[[4]])
  of <- function(m, names, records) m[records, match(names, slots), drop = FALSE]
  everything <- rep(TRUE, nrow(d))
  same_set <- function(a, b) setequal(a, b) && length(a) == length(b)
  ranks <- function(m, before, after, records) {
    b <- of(m, before, records); a <- of(m, after, records)
    c(before = rank_qr(b), before_svd = rank_svd(b), after = rank_qr(a), after_svd = rank_svd(a),
      kept = ncol(a), both = rank_qr(cbind(b, a)))
  }
  rz <- ranks(z, s2, s3, everything)
  rx <- ranks(x, s3, s4, home)
  good <- function(r) length(unique(r)) == 1   # all six numbers are the rank
  zero_z <- slots[colSums(z) == 0]
  zero_x <- s1[colSums(of(x, s1, complete)) == 0]
  rows <- rbind(rows, data.frame(
    design = k, zero = same_set(removed[[1]], zero_z) && same_set(removed[[2]], zero_x),
    z = good(rz), x = good(rx), final_z = rank_qr(of(z, s4, everything)) == length(s4),
    intercept = kept_names[1] == "ZIntercept", order = identical(kept_names, s4),
    removed_z = length(removed[[3]]), removed_x = length(removed[[4]]),
    deficit_z = length(s2) - unname(rz["before"]), deficit_x = length(s3) - unname(rx["before"])))
}
write.csv(rows, file.path(folder, "ranks.csv"), row.names = FALSE)
