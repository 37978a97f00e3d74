"""Models as estimators of scikit-learn."""

import pickle
import warnings

import numpy as np
import pandas as pd
import pytest
from sklearn.base import is_classifier, is_regressor
from sklearn.exceptions import NotFittedError
from sklearn.pipeline import make_pipeline
from sklearn.preprocessing import FunctionTransformer
from sklearn.utils.estimator_checks import check_estimator

from velscore.sklearn import PmmlClassifier, PmmlEstimator, PmmlRegressor

SWISS = "tests/data/cases/lm-swiss/model.pmml"
IRIS = "tests/data/cases/mlr-iris-squared/model.pmml"

OTHER_COLUMNS = "it scores tables of its own making, whose columns aren't the model's"
FITS = "it expects that fit looks at its table; the document was fitted elsewhere"
NO_FITTING = "it expects an estimator that isn't fitted; one with a document is"
OTHER_CLASSES = "it expects the classes of its own target"
TEXT_CLASSES = "it computes with predictions, which are texts here"
NOT_APPLICABLE = {
    "check_fit_score_takes_y": OTHER_COLUMNS,
    "check_estimators_dtypes": OTHER_COLUMNS,
    "check_dtype_object": OTHER_COLUMNS,
    "check_pipeline_consistency": OTHER_COLUMNS,
    "check_estimators_pickle": OTHER_COLUMNS,
    "check_f_contiguous_array_estimator": OTHER_COLUMNS,
    "check_regressor_data_not_an_array": OTHER_COLUMNS,
    "check_supervised_y_2d": OTHER_COLUMNS,
    "check_regressors_int": OTHER_COLUMNS,
    "check_methods_sample_order_invariance": OTHER_COLUMNS,
    "check_methods_subset_invariance": OTHER_COLUMNS,
    "check_dict_unchanged": OTHER_COLUMNS,
    "check_fit_idempotent": OTHER_COLUMNS,
    "check_classifiers_one_label": OTHER_COLUMNS,
    "check_n_features_in_after_fitting": FITS,
    "check_complex_data": FITS,
    "check_estimators_empty_data_messages": FITS,
    "check_estimators_nan_inf": FITS,
    "check_estimator_sparse_tag": FITS,
    "check_estimator_sparse_array": FITS,
    "check_estimator_sparse_matrix": FITS,
    "check_regressors_train": FITS,
    "check_classifiers_train": FITS,
    "check_classifiers_regression_target": FITS,
    "check_supervised_y_no_nan": FITS,
    "check_fit1d": FITS,
    "check_estimators_unfitted": NO_FITTING,
    "check_fit_check_is_fitted": NO_FITTING,
    "check_n_features_in": NO_FITTING,
    "check_classifiers_classes": OTHER_CLASSES,
    "check_classifier_data_not_an_array": TEXT_CLASSES,
}


@pytest.mark.parametrize("estimator", [PmmlRegressor(SWISS), PmmlClassifier(IRIS)], ids=str)
def test_the_checks_of_scikit_learn_that_apply(estimator):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        results = check_estimator(estimator, expected_failed_checks=NOT_APPLICABLE, on_fail=None)
    failed = [r["check_name"] for r in results if r["status"] == "failed"]
    passed = [r["check_name"] for r in results if r["status"] == "passed"]
    assert failed == []
    assert len(passed) > 15


def test_the_kind_follows_the_model():
    assert is_regressor(PmmlEstimator(SWISS))
    assert is_classifier(PmmlEstimator(IRIS))


def test_scores_are_those_of_the_fitting_program():
    frame = pd.read_csv("tests/data/cases/lm-swiss/input.csv")
    expected = pd.read_csv("tests/data/cases/lm-swiss/expected.csv")["prediction"]
    model = PmmlRegressor(SWISS)
    assert np.allclose(model.predict(frame), expected, rtol=1e-9)
    in_order = frame[list(model.feature_names_in_)].to_numpy()
    assert np.array_equal(model.predict(in_order), model.predict(frame))
    assert make_pipeline(FunctionTransformer(), model).fit(frame).score(frame, expected) == 1.0


def test_categories_and_their_probabilities():
    frame = pd.read_csv("tests/data/cases/mlr-iris-squared/input.csv")
    expected = pd.read_csv("tests/data/cases/mlr-iris-squared/expected.csv")
    model = PmmlClassifier(IRIS)
    assert list(model.predict(frame)) == list(expected["prediction"])
    for i, name in enumerate(model.classes_):
        assert np.allclose(model.predict_proba(frame)[:, i], expected[f"probability({name})"], rtol=1e-7)


def test_without_a_document_it_isnt_fitted():
    with pytest.raises(NotFittedError, match="has no document"):
        PmmlRegressor().fit([[1.0]])


def test_it_is_pickled_with_its_document():
    frame = pd.read_csv("tests/data/cases/lm-swiss/input.csv")
    model = PmmlRegressor(SWISS)
    again = pickle.loads(pickle.dumps(model))
    assert np.array_equal(again.predict(frame), model.predict(frame))


def test_sparse_tables_are_refused():
    sparse = pytest.importorskip("scipy.sparse")
    with pytest.raises(TypeError, match="[Ss]parse"):
        PmmlRegressor(SWISS).predict(sparse.eye(5))
