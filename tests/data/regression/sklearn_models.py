"""Models of scikit-learn and statsmodels as RegressionModel documents, with the libraries' predictions.

    Rscript r_tables.R TABLES
    python sklearn_models.py TABLES [NAME...]

writes a folder for each model beside this script: model.pmml as sklearn2pmml's converter makes it,
input.csv, expected.csv with 17 digits, case.json. The converter wants Java. A model that a library's
later version fits otherwise gets other numbers; the ones here ran with Python 3.11.7, scikit-learn
1.9.0, statsmodels 0.15.0, sklearn2pmml 0.133.1, pandas 3.1.1 and numpy 2.4.6.
"""

import json
import pathlib
import re
import sys
import warnings

import numpy as np
import pandas as pd
import statsmodels.api as sm
from sklearn.compose import ColumnTransformer
from sklearn.datasets import load_breast_cancer, load_diabetes, load_iris, load_wine
from sklearn.discriminant_analysis import LinearDiscriminantAnalysis
from sklearn.feature_selection import SelectKBest, f_regression
from sklearn.impute import SimpleImputer
from sklearn.linear_model import (ARDRegression, BayesianRidge, ElasticNet, GammaRegressor, HuberRegressor,
                                  Lasso, LinearRegression, LogisticRegression, PoissonRegressor, Ridge,
                                  SGDClassifier, TweedieRegressor)
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import (Binarizer, KBinsDiscretizer, MaxAbsScaler, MinMaxScaler, OneHotEncoder,
                                   OrdinalEncoder, PolynomialFeatures, RobustScaler, StandardScaler)
from sklearn2pmml import sklearn2pmml
from sklearn2pmml.decoration import Alias, CategoricalDomain, ContinuousDomain
from sklearn2pmml.pipeline import PMMLPipeline
from sklearn2pmml.preprocessing import ExpressionTransformer, MultiLookupTransformer, PowerFunctionTransformer
from sklearn2pmml.statsmodels import StatsModelsClassifier, StatsModelsRegressor

HERE = pathlib.Path(__file__).resolve().parent
TABLES = pathlib.Path(sys.argv[1])
MOST_ROWS = 60

warnings.filterwarnings("ignore")


def table(name, **options):
    return pd.read_csv(TABLES / f"{name}.csv", **options)


def bunch(loaded):
    frame = loaded.data
    frame.columns = [re.sub(r"[^A-Za-z0-9]+", "_", column) for column in frame.columns]
    return frame, loaded.target


def text(value):
    if value is None or value is pd.NA or (isinstance(value, float) and np.isnan(value)):
        return ""
    if isinstance(value, (bool, np.bool_)):
        return "true" if value else "false"
    if isinstance(value, (float, np.floating)):
        return repr(float(value))
    return str(value)


def write_table(path, frame):
    lines = [",".join(frame.columns)]
    lines += [",".join(text(value) for value in row) for row in frame.itertuples(index=False)]
    path.write_text("\n".join(lines) + "\n")


MODELS = {}


def model(dataset, notes=""):
    def keep(function):
        MODELS[function.__name__.replace("_", "-")] = (function, dataset, notes)
        return function

    return keep


def save(name, pipeline, inputs, dataset, notes, classes, verified):
    folder = HERE / name
    folder.mkdir(exist_ok=True)
    rows = inputs.iloc[:: max(1, len(inputs) // MOST_ROWS)].head(MOST_ROWS)
    if verified:
        pipeline.verify(verified_rows(inputs))
    sklearn2pmml(pipeline, str(folder / "model.pmml"))
    write_table(folder / "input.csv", rows)
    if classes is None:
        expected = pd.DataFrame({"prediction": np.asarray(pipeline.predict(rows), dtype=float).ravel()})
    else:
        probabilities = np.asarray(pipeline.predict_proba(rows))
        expected = pd.DataFrame({"prediction": [text(classes[i]) for i in probabilities.argmax(axis=1)]})
        for i, category in enumerate(classes):
            expected[f"probability({text(category)})"] = probabilities[:, i]
    write_table(folder / "expected.csv", expected)
    about = {
        "name": name,
        "produced_by": "sklearn_models.py: sklearn2pmml's converter, predictions of the fitting library",
        "dataset": dataset,
        "rows": len(rows),
        "tolerance": 1e-12,
        "notes": notes,
    }
    (folder / "case.json").write_text(json.dumps(about, indent=2) + "\n")


def verified_rows(inputs):
    return inputs.head(5)


# Regressions.


@model("sklearn diabetes", "numbers alone")
def sk_linear_diabetes():
    x, y = bunch(load_diabetes(as_frame=True, scaled=False))
    return PMMLPipeline([("regressor", LinearRegression())]).fit(x, y.rename("progression")), x


@model("sklearn diabetes", "standardized")
def sk_ridge_standardized_diabetes():
    x, y = bunch(load_diabetes(as_frame=True, scaled=False))
    return PMMLPipeline([("scaler", StandardScaler()), ("regressor", Ridge(alpha=2.5))]).fit(x, y), x


@model("datasets::mtcars", "squares and products of scaled numbers, some coefficients 0")
def sk_lasso_polynomial_mtcars():
    cars = table("mtcars")
    x = cars[["wt", "hp", "qsec"]]
    steps = [("scaler", MinMaxScaler()), ("powers", PolynomialFeatures(2, include_bias=False)),
             ("regressor", Lasso(alpha=0.02))]
    return PMMLPipeline(steps).fit(x, cars["mpg"]), x


@model("datasets::mtcars", "cubes, unscaled")
def sk_cubes_mtcars():
    cars = table("mtcars")
    x = cars[["wt"]]
    return PMMLPipeline([("powers", PolynomialFeatures(3)), ("regressor", LinearRegression())]).fit(x, cars["mpg"]), x


@model("datasets::mtcars", "integers as categories, a ContinuousDomain")
def sk_onehot_integers_mtcars():
    cars = table("mtcars")
    x = cars[["cyl", "gear", "wt"]]
    mapper = ColumnTransformer([
        ("factors", make_pipeline(CategoricalDomain(), OneHotEncoder(drop="first")), ["cyl", "gear"]),
        ("numbers", ContinuousDomain(), ["wt"]),
    ])
    return PMMLPipeline([("mapper", mapper), ("regressor", LinearRegression())]).fit(x, cars["mpg"]), x


@model("datasets::airquality", "missing values imputed by their mean and median")
def sk_imputed_airquality():
    air = table("airquality").dropna(subset=["Ozone"])
    x = air[["Solar.R", "Wind", "Temp", "Month"]]
    mapper = ColumnTransformer([
        ("mean", make_pipeline(SimpleImputer(), StandardScaler()), ["Solar.R", "Wind"]),
        ("median", SimpleImputer(strategy="median"), ["Temp"]),
        ("month", OneHotEncoder(), ["Month"]),
    ])
    return PMMLPipeline([("mapper", mapper), ("regressor", BayesianRidge())]).fit(x, air["Ozone"]), x


@model("MASS::survey", "missing texts replaced by one of the categories, unlisted ones taken as they are")
def sk_missing_texts_survey():
    survey = table("survey").dropna(subset=["Pulse", "Age", "Exer"])
    x = survey[["Sex", "Exer", "Smoke", "Age"]].copy()
    domains = {"Sex": "Female", "Exer": "Some", "Smoke": "Never"}
    mapper = ColumnTransformer([
        (name, make_pipeline(CategoricalDomain(missing_value_treatment="as_value",
                                               missing_value_replacement=replacement,
                                               invalid_value_treatment="as_is"),
                             OneHotEncoder(handle_unknown="ignore")), [name])
        for name, replacement in domains.items()
    ] + [("age", ContinuousDomain(), ["Age"])])
    return PMMLPipeline([("mapper", mapper), ("regressor", Ridge())]).fit(x, survey["Pulse"]), x


@model("MASS::Cars93", "bins of a number as categories, ordinals as numbers")
def sk_bins_cars93():
    cars = table("cars93", keep_default_na=False)
    x = cars[["Horsepower", "AirBags", "Weight"]]
    mapper = ColumnTransformer([
        ("bins", KBinsDiscretizer(n_bins=4, encode="onehot", strategy="quantile",
                                  quantile_method="averaged_inverted_cdf"), ["Horsepower"]),
        ("bags", OrdinalEncoder(), ["AirBags"]),
        ("weight", make_pipeline(ContinuousDomain(), RobustScaler()), ["Weight"]),
    ])
    return PMMLPipeline([("mapper", mapper), ("regressor", LinearRegression())]).fit(x, cars["Price"]), x


@model("MASS::Cars93", "expressions: a quotient, a logarithm, a condition")
def sk_expressions_cars93():
    cars = table("cars93", keep_default_na=False)
    x = cars[["Horsepower", "Weight", "Length", "Origin"]]
    mapper = ColumnTransformer([
        ("power", ExpressionTransformer("X[0] / X[1]"), ["Horsepower", "Weight"]),
        ("length", Alias(ExpressionTransformer("numpy.log(X[0])"), "log(Length)"), ["Length", "Weight"]),
        ("heavy", ExpressionTransformer("1 if X[0] > 3000 else 0"), ["Weight", "Length"]),
        ("origin", OneHotEncoder(), ["Origin"]),
    ])
    return PMMLPipeline([("mapper", mapper), ("regressor", LinearRegression())]).fit(x, cars["MPG.city"]), x


@model("MASS::Cars93", "a table from two texts to numbers")
def sk_lookup_cars93():
    cars = table("cars93", keep_default_na=False)
    x = cars[["Type", "Origin", "Weight"]]
    rank = {("Small", "USA"): 1.0, ("Small", "non-USA"): 0.5, ("Midsize", "USA"): 3.0, ("Van", "USA"): 5.0,
            ("Van", "non-USA"): 4.5, ("Compact", "USA"): 2.0}
    mapper = ColumnTransformer([
        ("rank", MultiLookupTransformer(rank, default_value=0.0), ["Type", "Origin"]),
        ("weight", MaxAbsScaler(), ["Weight"]),
    ])
    return PMMLPipeline([("mapper", mapper), ("regressor", ElasticNet(alpha=0.001, max_iter=100000))]).fit(
        x, cars["MPG.highway"]), x


@model("MASS::Cars93", "several linear regressors: robust")
def sk_huber_cars93():
    cars = table("cars93", keep_default_na=False)
    x = cars[["Horsepower", "RPM"]]
    return PMMLPipeline([("scaler", StandardScaler()), ("regressor", HuberRegressor())]).fit(x, cars["Price"]), x


@model("sklearn diabetes", "a selection of columns")
def sk_selected_diabetes():
    x, y = bunch(load_diabetes(as_frame=True))
    steps = [("domain", ContinuousDomain()), ("select", SelectKBest(f_regression, k=4)), ("regressor", ARDRegression())]
    return PMMLPipeline(steps).fit(x, y), x


@model("datasets::warpbreaks", "normalization exp, texts times texts")
def sk_poisson_warpbreaks():
    breaks = table("warpbreaks")
    x = breaks[["wool", "tension"]]
    mapper = ColumnTransformer([("texts", OneHotEncoder(drop="first"), ["wool", "tension"])], sparse_threshold=0)
    steps = [("mapper", mapper), ("products", PolynomialFeatures(2, interaction_only=True, include_bias=False)),
             ("regressor", PoissonRegressor(alpha=0.01, tol=1e-10))]
    return PMMLPipeline(steps).fit(x, breaks["breaks"]), x


@model("datasets::mtcars", "normalization exp, powers")
def sk_gamma_powers_mtcars():
    cars = table("mtcars")
    x = cars[["wt", "hp"]]
    mapper = ColumnTransformer([("wt", PowerFunctionTransformer(2), ["wt"]), ("hp", MinMaxScaler(), ["hp"])])
    return PMMLPipeline([("mapper", mapper), ("regressor", GammaRegressor(alpha=0.001))]).fit(x, cars["mpg"]), x


@model("datasets::chickwts", "Tweedie with the link identity: one factor alone")
def sk_tweedie_chickwts():
    chicks = table("chickwts")
    x = chicks[["feed"]]
    mapper = ColumnTransformer([("feed", OneHotEncoder(), ["feed"])])
    return PMMLPipeline([("mapper", mapper), ("regressor", TweedieRegressor(power=0, alpha=0.1))]).fit(
        x, chicks["weight"]), x


@model("datasets::toothgrowth", "with the records of ModelVerification")
def sk_verified_toothgrowth():
    teeth = table("toothgrowth")
    x = teeth[["supp", "dose"]]
    mapper = ColumnTransformer([("supp", OneHotEncoder(), ["supp"]), ("dose", "passthrough", ["dose"])])
    return PMMLPipeline([("mapper", mapper), ("regressor", LinearRegression())]).fit(x, teeth["len"]), x, "verified"


# Classifications.


@model("sklearn breast_cancer", "two classes of integers")
def sk_logistic_breast_cancer():
    x, y = bunch(load_breast_cancer(as_frame=True))
    return PMMLPipeline([("scaler", StandardScaler()), ("classifier", LogisticRegression(C=0.1))]).fit(x, y), x


@model("sklearn iris", "three classes of texts")
def sk_multinomial_iris():
    loaded = load_iris(as_frame=True)
    x, y = bunch(loaded)
    species = pd.Series(loaded.target_names[y], name="Species").astype(object)
    return PMMLPipeline([("classifier", LogisticRegression(max_iter=1000))]).fit(x, species), x


@model("sklearn wine", "three classes of integers")
def sk_multinomial_wine():
    x, y = bunch(load_wine(as_frame=True))
    return PMMLPipeline([("scaler", RobustScaler()), ("classifier", LogisticRegression(C=0.5))]).fit(x, y), x


@model("sklearn breast_cancer", "linear discriminant of two classes")
def sk_discriminant_breast_cancer():
    x, y = bunch(load_breast_cancer(as_frame=True))
    x = x.iloc[:, :5]
    return PMMLPipeline([("classifier", LinearDiscriminantAnalysis())]).fit(x, y), x


@model("datasets::infert", "texts and numbers, the two classes booleans")
def sk_logistic_infert():
    infert = table("infert")
    x = infert[["education", "parity", "spontaneous", "age"]]
    mapper = ColumnTransformer([
        ("education", OneHotEncoder(), ["education"]),
        ("spontaneous", OneHotEncoder(), ["spontaneous"]),
        ("numbers", StandardScaler(), ["parity", "age"]),
    ])
    y = (infert["case"] == 1).rename("case")
    return PMMLPipeline([("mapper", mapper), ("classifier", LogisticRegression())]).fit(x, y), x


@model("MASS::birthwt", "booleans among the predictors, products of them")
def sk_booleans_birthwt():
    births = table("birthwt")
    x = births[["age", "lwt"]].copy()
    x["smoke"] = births["smoke"] == 1
    x["ht"] = births["ht"] == 1
    mapper = ColumnTransformer([
        ("flags", OneHotEncoder(drop="if_binary"), ["smoke", "ht"]),
        ("numbers", make_pipeline(ContinuousDomain(), StandardScaler()), ["age", "lwt"]),
    ])
    y = births["low"].map({0: "normal", 1: "low"}).rename("weight_class").astype(object)
    steps = [("mapper", mapper), ("products", PolynomialFeatures(2, interaction_only=True, include_bias=False)),
             ("classifier", LogisticRegression(max_iter=1000))]
    return PMMLPipeline(steps).fit(x, y), x


@model("MASS::birthwt", "descent by gradients, a threshold of a number")
def sk_gradient_birthwt():
    births = table("birthwt")
    x = births[["age", "lwt", "ptl"]]
    mapper = ColumnTransformer([
        ("numbers", StandardScaler(), ["age", "lwt"]),
        ("ptl", Binarizer(threshold=0.5), ["ptl"]),
    ])
    steps = [("mapper", mapper), ("classifier", SGDClassifier(loss="log_loss", random_state=1))]
    return PMMLPipeline(steps).fit(x, births["low"]), x


@model("MASS::housing", "three classes, ordinal predictors, weights left out")
def sk_multinomial_housing():
    housing = table("housing", keep_default_na=False)
    x = housing[["Infl", "Type", "Cont"]]
    mapper = ColumnTransformer([
        ("infl", OrdinalEncoder(), ["Infl"]),
        ("texts", OneHotEncoder(drop="first"), ["Type", "Cont"]),
    ])
    pipeline = PMMLPipeline([("mapper", mapper), ("classifier", LogisticRegression())])
    return pipeline.fit(x, housing["Sat"], classifier__sample_weight=housing["Freq"]), x


# statsmodels.


@model("datasets::mtcars", "OLS of statsmodels")
def sm_ols_mtcars():
    cars = table("mtcars")
    x = cars[["wt", "hp"]]
    return PMMLPipeline([("regressor", StatsModelsRegressor(sm.OLS))]).fit(x, cars["mpg"]), x


@model("MASS::quine", "Poisson of statsmodels")
def sm_poisson_quine():
    quine = table("quine", keep_default_na=False)
    x = quine[["Eth", "Sex", "Age"]]
    mapper = ColumnTransformer([("texts", OneHotEncoder(drop="first", sparse_output=False), ["Eth", "Sex", "Age"])])
    steps = [("mapper", mapper), ("regressor", StatsModelsRegressor(sm.Poisson))]
    return PMMLPipeline(steps).fit(x, quine["Days"]), x


@model("MASS::birthwt", "Logit of statsmodels")
def sm_logit_birthwt():
    births = table("birthwt")
    x = births[["age", "lwt", "smoke"]]
    return PMMLPipeline([("classifier", StatsModelsClassifier(sm.Logit))]).fit(x, births["low"]), x


@model("sklearn iris", "MNLogit of statsmodels, without an intercept")
def sm_mnlogit_iris():
    loaded = load_iris(as_frame=True)
    x, y = bunch(loaded)
    x = x[["sepal_length_cm_", "sepal_width_cm_"]]
    classifier = StatsModelsClassifier(sm.MNLogit, fit_intercept=False)
    return PMMLPipeline([("classifier", classifier)]).fit(x, y.rename("Species")), x


def main():
    wanted = sys.argv[2:] or list(MODELS)
    for name in wanted:
        function, dataset, notes = MODELS[name]
        try:
            made = function()
            pipeline, inputs = made[0], made[1]
            estimator = pipeline.steps[-1][1]
            classes = getattr(estimator, "classes_", None)
            save(name, pipeline, inputs, dataset, notes, classes, len(made) > 2)
            print(name)
        except Exception as failure:  # the others are made all the same
            print(f"{name} FAILED: {str(failure)[:600]}", file=sys.stderr)


main()
