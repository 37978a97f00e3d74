"""Models of scikit-learn as RegressionModel documents that Nyoka exports, with scikit-learn's predictions.
Of more than two classes it makes a MiningModel, whose predictions aren't scikit-learn's.

    python nyoka_models.py

writes a folder for each model beside this script: model.pmml as Nyoka makes it, input.csv, expected.csv
with 17 digits, case.json. The numbers here ran with Python 3.11, scikit-learn 1.9.1, Nyoka 5.5.0, pandas
3.1.1 and numpy 2.4.6. All data sets come with scikit-learn.
"""

import csv
import json
import pathlib
import warnings

import numpy as np
from nyoka import skl_to_pmml
from sklearn.datasets import load_breast_cancer, load_diabetes
from sklearn.linear_model import LinearRegression, LogisticRegression
from sklearn.pipeline import Pipeline
from sklearn.preprocessing import MinMaxScaler, StandardScaler

HERE = pathlib.Path(__file__).resolve().parent
ROWS = 40

warnings.filterwarnings("ignore")


def names(columns):
    return [column.replace(" ", "_").replace("(", "").replace(")", "").replace("/", "_") for column in columns]


def frame(loaded, columns):
    data = loaded.data
    data.columns = names(data.columns)
    return data[columns], loaded.target


def texts(row):
    return [repr(float(value)) if isinstance(value, (float, np.floating)) else str(value) for value in row]


def write(path, header, rows):
    with path.open("w", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(header)
        writer.writerows(texts(row) for row in rows)


def case(name, model, dataset, data, target, steps=(), notes=""):
    pipeline = Pipeline([*steps, ("model", model)]).fit(data, target)
    folder = HERE / name
    folder.mkdir(exist_ok=True)
    columns = list(data.columns)
    skl_to_pmml(pipeline, columns, "target", str(folder / "model.pmml"))
    shown = data.iloc[:: max(1, len(data) // ROWS)].head(ROWS)
    write(folder / "input.csv", columns, shown.to_numpy())
    predicted = pipeline.predict(shown)
    if hasattr(model, "classes_"):
        header = ["prediction", *(f"probability({category})" for category in model.classes_)]
        write(folder / "expected.csv", header,
              [[category, *shares] for category, shares in zip(predicted, pipeline.predict_proba(shown))])
    else:
        write(folder / "expected.csv", ["prediction"], [[value] for value in predicted])
    (folder / "case.json").write_text(json.dumps(
        {"name": name, "produced_by": "nyoka_models.py: Nyoka's exporter, predictions of scikit-learn",
         "dataset": dataset, "rows": len(shown), "tolerance": 1e-12, "notes": notes}, indent=2) + "\n")


def main():
    diabetes = frame(load_diabetes(as_frame=True), ["age", "bmi", "bp", "s5"])
    cancer = frame(load_breast_cancer(as_frame=True), ["mean_radius", "mean_texture", "mean_smoothness"])
    case("ny-linear-diabetes", LinearRegression(), "scikit-learn's diabetes", *diabetes)
    case("ny-linear-scaled-diabetes", LinearRegression(), "scikit-learn's diabetes", *diabetes,
         [("scale", StandardScaler())], "derived fields with constants of 16 decimals")
    case("ny-logistic-breast-cancer", LogisticRegression(max_iter=5000), "scikit-learn's breast_cancer", *cancer)
    case("ny-logistic-scaled-breast-cancer", LogisticRegression(max_iter=5000), "scikit-learn's breast_cancer",
         *cancer, [("scale", MinMaxScaler())], "derived fields with constants of 16 decimals")


if __name__ == "__main__":
    main()
