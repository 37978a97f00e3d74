# The reference values of tests/system/coefficients_test.cpp, one table a case: estimates, standard
# errors, t or z values, p values and 95% limits as R finds them by fitting the models of
# tests/data/cases once more.
#
#   Rscript tests/data/coefficients/reference.R FOLDER
#
# Made with R 4.2.2 and its package MASS. t with the residual degrees of freedom in linear models, z in all
# others, as the document has no degrees of freedom for them.
library(MASS)
folder <- commandArgs(TRUE)[1]
digits <- function(x) sprintf("%.17g", x)
write <- function(name, fit, rename = identity) {
    estimate <- coef(fit)
    estimate <- estimate[!is.na(estimate)]
    error <- sqrt(diag(vcov(fit)))[names(estimate)]
    linear <- class(fit)[1] == "lm"
    value <- estimate / error
    df <- if (linear) df.residual(fit) else Inf
    p <- 2 * pt(-abs(value), df)
    q <- qt(0.975, df)
    terms <- rename(sub("^\\(Intercept\\)$", "Intercept", names(estimate)))
    table <- data.frame(label = terms, estimate = digits(estimate), std_err = digits(error),
                        value = digits(value), p_value = digits(p),
                        ci_lower = digits(estimate - q * error),
                        ci_upper = digits(estimate + q * error))
    write.csv(table, file.path(folder, paste0(name, ".csv")), row.names = FALSE, quote = FALSE)
}

write("lm-swiss", lm(Fertility ~ ., swiss), function(n) sub("^Intercept$", "(Constant)", n))
write("lm-longley", lm(Employed ~ ., longley), function(n) sub("^Intercept$", "(Constant)", n))
write("lm-stackloss-no-constant", lm(stack.loss ~ . - 1, stackloss))
cars4 <- transform(mtcars, cyl = factor(cyl), am = factor(am, labels = c("automatic", "manual")))
write("glm-mtcars-interaction", lm(mpg ~ cyl + am + wt + hp + I(hp^2) + am:wt, cars4))
write("glm-sleep-paired", lm(extra ~ group + ID, sleep))
births <- transform(birthwt, race = factor(race, labels = c("white", "black", "other")),
                    smoke = factor(smoke, labels = c("no", "yes")),
                    ht = factor(ht, labels = c("no", "yes")))
write("glz-logit-number-birthwt",
      glm(low ~ age + lwt + race * smoke + ht, binomial, births))
write("blr-birthwt-sum",
      glm(low ~ race + smoke + lwt, binomial, births,
          contrasts = list(race = "contr.sum", smoke = "contr.sum")))
write("glz-poisson-quine", glm(Days ~ Eth * Sex + Age + Lrn, poisson, quine))
claims <- transform(Insurance, Group = factor(Group, ordered = FALSE), Age = factor(Age, ordered = FALSE))
write("glz-poisson-offset-insurance",
      glm(Claims ~ District + Group + Age + offset(log(Holders)), poisson, claims))
budworm <- data.frame(ldose = rep(0:5, 2), numdead = c(1, 4, 9, 13, 18, 20, 0, 2, 6, 10, 12, 16),
                      sex = factor(rep(c("M", "F"), c(6, 6))))
write("glz-trials-value-budworm",
      glm(cbind(numdead, 20 - numdead) ~ sex * ldose, binomial(probit), budworm))
write("glz-poisson-identity-sprays",
      glm(count ~ spray, poisson(identity), InsectSprays))
write("glz-negbin-quine", glm.nb(Days ~ Eth * Age + Sex, transform(quine, Age = relevel(Age, "F3"))))
write("glm-toothgrowth-aliased", lm(len ~ supp * dose + I(dose^2), ToothGrowth))
