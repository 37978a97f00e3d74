# Generalized linear models.

# Links that R has none of: the link, its inverse, and the derivative of the inverse.
own_link <- function(name, link, inverse, slope, valid = function(eta) TRUE) {
  structure(list(linkfun = link, linkinv = inverse, mu.eta = slope, valideta = valid, name = name), class = "link-glm")
}
log_log <- own_link("loglog", function(mu) -log(-log(mu)), function(eta) exp(-exp(-eta)),
                    function(eta) exp(-eta - exp(-eta)))
log_complement <- own_link("logc", function(mu) log(1 - mu), function(eta) 1 - exp(eta), function(eta) -exp(eta),
                           function(eta) all(eta < 0))
odds_root <- own_link("oddspower", function(mu) (sqrt(mu / (1 - mu)) - 1) / 0.5,
                      function(eta) {
                        odds <- (1 + 0.5 * eta)^2
                        odds / (1 + odds)
                      },
                      function(eta) {
                        root <- 1 + 0.5 * eta
                        root / (1 + root^2)^2
                      }, function(eta) all(1 + 0.5 * eta > 0))

budworm <- data.frame(ldose = rep(0:5, 2), dead = c(1, 4, 9, 13, 18, 20, 0, 2, 6, 10, 12, 16),
                      sex = factor(rep(c("M", "F"), each = 6)))
insurance <- transform(MASS::Insurance, log_holders = log(Holders), District = factor(District),
                       Group = factor(Group, ordered = FALSE), Age = factor(Age, ordered = FALSE))

add_case("glz-cloglog-pima", function() {
  fit <- glm(type ~ glu + bmi + age, binomial("cloglog"), MASS::Pima.tr)
  generalized_case(fit, MASS::Pima.tr, "binomial", "cloglog", classes = c("No", "Yes"))
})

cars_case <- function(formula, power) {
  # R takes power(-1) for the logarithm.
  link <- if (power == -1) "inverse" else power(power)
  fit <- glm(formula, Gamma(link), cars)
  generalized_case(fit, cars, "gamma", "power", link_parameter = power)
}
add_case("glz-gamma-cuberoot-cars", function() cars_case(dist ~ speed + I(speed^2), 1 / 3))
add_case("glz-gamma-inverse-cars", function() cars_case(dist ~ speed, -1))
add_case("glz-gamma-power-half-cars", function() cars_case(dist ~ speed, 0.5))

add_case("glz-igauss-trees", function() {
  # R's own starting values lead to a linear predictor below 0; from these it warns of steps there and takes shorter
  # ones.
  start <- c(1 / mean(trees$Volume)^2, 0, 0)
  fit <- suppressWarnings(glm(Volume ~ Girth + Height, inverse.gaussian("1/mu^2"), trees, start = start))
  generalized_case(fit, trees, "igauss", "power", link_parameter = -2)
})

add_case("glz-logc-birthwt", function() {
  fit <- glm(low ~ race + ui, binomial(log_complement), birthwt_cases)
  made <- generalized_case(fit, birthwt_cases, "binomial", "logc")
  made$expected <- made$expected[c("prediction", "std_dev")]
  made
})

add_case("glz-logit-number-birthwt", function() {
  fit <- glm(low ~ age + lwt + race * smoke + ht, binomial, birthwt_cases)
  generalized_case(fit, birthwt_cases, "binomial", "logit")
})

add_case("glz-loglog-budworm", function() {
  fit <- glm(cbind(dead, 20 - dead) ~ sex + ldose, binomial(log_log), budworm)
  generalized_case(fit, budworm, "binomial", "loglog", target = "dead", trials_value = 20)
})

add_case("glz-trials-value-budworm", function() {
  fit <- glm(cbind(dead, 20 - dead) ~ sex * ldose, binomial("probit"), budworm)
  generalized_case(fit, budworm, "binomial", "probit", target = "dead", trials_value = 20)
})

add_case("glz-trials-variable-menarche", function() {
  fit <- glm(cbind(Menarche, Total - Menarche) ~ Age, binomial, MASS::menarche)
  generalized_case(fit, MASS::menarche, "binomial", "logit", target = "Menarche", inputs = c("Age", "Total"),
                   trials = "Total")
})

add_case("glz-multinomial-form-probit", function() {
  fit <- glm(weight_class ~ lwt + race + ptl, binomial("probit"), birthwt_cases)
  generalized_case(fit, birthwt_cases, "binomial", "probit", type = "multinomialLogistic", classes = c("normal", "low"))
})

add_case("glz-negbin-quine", function() {
  data <- transform(MASS::quine, Age = relevel(Age, "F3"))
  fit <- glm.nb(Days ~ Eth * Age + Sex, data)
  generalized_case(fit, data, "negbin", "log", dist_parameter = 1 / fit$theta)
})

add_case("glz-normal-log-orange", function() {
  data <- transform(as.data.frame(Orange), Tree = factor(Tree, ordered = FALSE))
  fit <- glm(circumference ~ age + Tree, gaussian("log"), data)
  generalized_case(fit, data, "normal", "log", integers = "Tree")
})

add_case("glz-oddspower-birthwt", function() {
  fit <- glm(low ~ lwt + smoke, binomial(odds_root), birthwt_cases)
  generalized_case(fit, birthwt_cases, "binomial", "oddspower", link_parameter = 0.5)
})

add_case("glz-poisson-extensions-3.2", function() {
  fit <- glm(Claims ~ District + Group + offset(log_holders), poisson, insurance)
  generalized_case(fit, insurance, "poisson", "log", offset = "log_holders", version = "3.2")
})

add_case("glz-poisson-offset-insurance", function() {
  fit <- glm(Claims ~ District + Group + Age + offset(log_holders), poisson, insurance)
  generalized_case(fit, insurance, "poisson", "log", offset = "log_holders", integers = "District")
})

add_case("glz-poisson-identity-sprays", function() {
  fit <- glm(count ~ spray, poisson("identity"), InsectSprays)
  generalized_case(fit, InsectSprays, "poisson", "identity")
})

add_case("glz-poisson-quine", function() {
  fit <- glm(Days ~ Eth * Sex + Age + Lrn, poisson, MASS::quine)
  generalized_case(fit, MASS::quine, "poisson", "log", selector = "algorithmName")
})

# The first rows stand in the document too, with their scores.
verification_of <- function(rows, target, scores) {
  names <- c(names(rows), target)
  element("ModelVerification", recordCount = nrow(rows), fieldCount = length(names), inside = c(
    element("VerificationFields", inside = each(names, function(name) {
      element("VerificationField", field = name, column = name, precision = if (name == target) "1E-9")
    })),
    element("InlineTable", inside = each(seq_len(nrow(rows)), function(i) {
      record <- c(lapply(rows[i, ], as.character), setNames(list(number(scores[i])), target))
      element("row", inside = each(names, function(name) element(name, text = record[[name]])))
    }))))
}

add_case("glz-verification-birthwt", function() {
  fit <- glm(low ~ age + lwt + smoke, binomial, birthwt_cases)
  rows <- rows_of(birthwt_cases, inputs_of(fit), 40)
  first <- head(rows, 8)
  records <- verification_of(first, "low", predict(fit, first, type = "response"))
  generalized_case(fit, birthwt_cases, "binomial", "logit", rows = rows, verification = records, description = "")
})
