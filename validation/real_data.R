# Writes the public data sets of the fits as CSV files of 0/1 columns.
#   Rscript real_data.R FOLDER
#
# The data are read from the installed packages (datasets, MASS, geepack) and never kept in the
# project. A covariate that is not binary is cut at a point named in the description. None of these
# studies has a present-on-admission value, so P is made up: it is 1 where Y is 1 and the number of
# the record (after sorting by cluster) is a multiple of three. What matters here is only that the
# program and the other packages fit the same records.
suppressMessages({library(MASS); library(geepack)})
folder <- commandArgs(TRUE)[1]
sets <- NULL

put <- function(name, kind, package, text, y, x, cluster = seq_along(y) %/% 20) {
  keep <- !is.na(y)
  y <- as.integer(y[keep]); x <- data.frame(lapply(x, as.integer))[keep, , drop = FALSE]
  cluster <- as.integer(factor(as.character(cluster[keep]), unique(as.character(cluster[keep]))))
  o <- order(cluster)
  y <- y[o]; x <- x[o, , drop = FALSE]; cluster <- cluster[o]
  p <- as.integer(y == 1 & seq_along(y) %% 3 == 0)
  write.csv(data.frame(cluster, y, p, x), file.path(folder, paste0(name, ".csv")),
            row.names = FALSE, na = "")
  sets <<- rbind(sets, data.frame(name, kind, package, text, records = length(y),
                                  incomplete = sum(!complete.cases(x)),
                                  clusters = length(unique(cluster)),
                                  largest = max(table(cluster)), covariates = ncol(x)))
}

# Independent records.
d <- birthwt
put("birthwt", "logistic", "MASS",
    "low birth weight; age < 20, lwt >= 130, race 2, race 3, smoke, ptl > 0, ht, ui, ftv > 0",
    d$low, with(d, list(young = age < 20, heavy = lwt >= 130, black = race == 2, other = race == 3,
                        smoke = smoke, ptl = ptl > 0, ht = ht, ui = ui, ftv = ftv > 0)))
d <- rbind(Pima.tr2, Pima.te)
put("Pima", "logistic", "MASS",
    paste("Pima.tr2 and Pima.te: diabetes; npreg >= 4, glu >= 120, bp >= 80, skin >= 30,",
          "bmi >= 30, ped >= 0.5, age >= 30; the missing values are those of the data"),
    d$type == "Yes",
    with(d, list(npreg = npreg >= 4, glu = glu >= 120, bp = bp >= 80, skin = skin >= 30,
                 bmi = bmi >= 30, ped = ped >= 0.5, age = age >= 30)))
d <- biopsy
put("biopsy", "logistic", "MASS",
    "malignant; V1 >= 5, V2 >= 3, V4 >= 3, V6 >= 5, V7 >= 4, V8 >= 3; missing V6 of the data",
    d$class == "malignant",
    with(d, list(V1 = V1 >= 5, V2 = V2 >= 3, V4 = V4 >= 3, V6 = V6 >= 5, V7 = V7 >= 4,
                 V8 = V8 >= 3)))
d <- as.data.frame(Titanic)
d <- d[rep(seq_len(nrow(d)), d$Freq), ]
put("Titanic", "logistic", "datasets", "survived; second class, third class, crew, female, child",
    d$Survived == "Yes",
    with(d, list(second = Class == "2nd", third = Class == "3rd", crew = Class == "Crew",
                 female = Sex == "Female", child = Age == "Child")))
d <- infert
put("infert", "logistic", "datasets",
    "case; induced > 0, spontaneous > 0, parity >= 2, age >= 32, education 12+ years",
    d$case, with(d, list(induced = induced > 0, spontaneous = spontaneous > 0, parity = parity >= 2,
                         age = age >= 32, education = education == "12+ yrs")))

# Clustered records.
data(ohio, respiratory, dietox, muscatine, package = "geepack")
d <- ohio
put("ohio", "gee", "geepack", "wheeze; maternal smoking, age 9 or 10; by child",
    d$resp, with(d, list(smoke = smoke, late = age >= 0)), d$id)
d <- respiratory
put("respiratory", "gee", "geepack",
    paste("good status; active treatment, male, age >= 30, baseline, visits 3 and 4, centre 2;",
          "by patient"),
    d$outcome, with(d, list(treat = treat == "A", male = sex == "M", age = age >= 30,
                            baseline = baseline, late = visit >= 3, centre = center == 2)),
    paste(d$center, d$id))
d <- bacteria
put("bacteria", "gee", "MASS", "bacteria present; active drug, high compliance, week > 2; by child",
    d$y == "y", with(d, list(drug = ap == "a", hi = hilo == "hi", late = week > 2)), d$ID)
d <- dietox
put("dietox", "gee", "geepack",
    "weight >= 60; Evit100, Evit200, Cu035, Cu175, start >= 26; by pig",
    d$Weight >= 60, with(d, list(Evit100 = Evit == "Evit100", Evit200 = Evit == "Evit200",
                                 Cu035 = Cu == "Cu035", Cu175 = Cu == "Cu175",
                                 start = Start >= 26)), d$Pig)
d <- epil
put("epil", "gee", "MASS", "more than 4 seizures; progabide, base >= 20, age >= 28, V4; by patient",
    d$y > 4, with(d, list(trt = trt == "progabide", base = base >= 20, age = age >= 28, V4 = V4)),
    d$subject)
d <- muscatine
put("muscatine", "gee", "geepack",
    "obese; girl, age 10 to 13, age 14 or more, second occasion, third occasion; by child",
    d$obese == "yes", with(d, list(girl = gender == "F", middle = age >= 10 & age < 14,
                                   old = age >= 14, second = occasion == 2,
                                   third = occasion == 3)), d$id)
write.csv(sets, file.path(folder, "sets.csv"), row.names = FALSE)
