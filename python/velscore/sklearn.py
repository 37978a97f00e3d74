"""A model of a document as an estimator of scikit-learn.

>>> import velscore
>>> from velscore.sklearn import PmmlRegressor
>>> model = PmmlRegressor("examples/swiss-fertility/model.pmml")
>>> model.predict([[17.0, 15, 12, 9.96, 22.2]])
array([74.61529724])
"""

from __future__ import annotations

import os
from typing import TYPE_CHECKING, Any

import numpy as np
from sklearn.base import BaseEstimator, ClassifierMixin, RegressorMixin
from sklearn.exceptions import NotFittedError

from ._errors import DocumentError
from ._model import Model, load

if TYPE_CHECKING:
    from ._model import Document
    from ._typing import Policy

__all__ = ["PmmlClassifier", "PmmlEstimator", "PmmlRegressor"]


def _has_classes(model: Model) -> bool:
    return any(c["column"].startswith("probability(") for c in model.inspect()["columns"])


class _Pmml(BaseEstimator):  # type: ignore[misc]
    """What both kinds share. `document` is what `velscore.load` takes, or a `velscore.Model`."""

    def __init__(self, document: Document | Model | None = None, *, policy: Policy | None = None) -> None:
        self.document = document
        self.policy = policy

    @property
    def model_(self) -> Model:
        """The model; read when it is first asked for."""
        read = self.__dict__.get("_read")
        if read is None or read[0] is not self.document:
            if self.document is None:
                raise NotFittedError(
                    f"{type(self).__name__} has no document; it isn't fitted, but loaded: "
                    f"{type(self).__name__}('model.pmml')"
                )
            model = self.document if isinstance(self.document, Model) else load(self.document)
            read = (self.document, model)
            self.__dict__["_read"] = read
        found: Model = read[1]
        return found

    @property
    def feature_names_in_(self) -> Any:
        return np.array(self.model_.feature_names_in_, dtype=object)

    @property
    def n_features_in_(self) -> int:
        return len(self.model_.feature_names_in_)

    def __sklearn_is_fitted__(self) -> bool:
        return self.document is not None

    def fit(self, X: Any, y: Any = None) -> _Pmml:
        """Does nothing: the document was fitted elsewhere. Raises NotFittedError without one.

        So it can stand in a pipeline, whose other steps are fitted.
        """
        self.model_  # which raises
        return self

    def _scores(self, X: Any, columns: str) -> Any:
        table = X
        if hasattr(X, "toarray"):
            raise TypeError("sparse input is not supported; X.toarray() is a dense array")
        if not hasattr(X, "columns") and not hasattr(X, "__arrow_c_stream__"):
            table = np.asarray(X)
            if table.ndim == 1 and table.dtype.names is None:
                raise ValueError(
                    "Expected 2D array, got 1D array instead. Reshape your data: "
                    "array.reshape(1, -1) is one row."
                )
        scored = self.model_.score(table, columns=columns, policy=self.policy)
        if isinstance(scored, np.ndarray):
            return [scored[name] for name in scored.dtype.names or ()]
        return [np.asarray(scored[name]) for name in scored.columns]

    def __getstate__(self) -> dict[str, Any]:
        state: dict[str, Any] = dict(super().__getstate__())
        state.pop("_read", None)
        if self.document is not None and not isinstance(self.document, Model):
            state["document"] = self.model_  # the file may not be where this is read again
        return state

    def __repr__(self, *_: Any, **__: Any) -> str:
        if isinstance(self.document, (str, os.PathLike, Model)):
            return f"{type(self).__name__}({self.document!r})"
        return f"{type(self).__name__}()"


class PmmlRegressor(RegressorMixin, _Pmml):  # type: ignore[misc]
    """A model of numbers: means, or of a Cox model probabilities to survive.

    A row that can't be scored is NaN.
    """

    def predict(self, X: Any) -> Any:
        """The prediction of each row."""
        return np.asarray(self._scores(X, "prediction")[0], dtype=float)


class PmmlClassifier(ClassifierMixin, _Pmml):  # type: ignore[misc]
    """A model of categories. `classes_` are texts, as the document has them."""

    @property
    def classes_(self) -> Any:
        return np.array(self.model_.classes_)

    def predict(self, X: Any) -> Any:
        """The category of each row; None for one that can't be scored."""
        return np.asarray(self._scores(X, "prediction")[0])

    def predict_proba(self, X: Any) -> Any:
        """The probabilities of `classes_`; NaN for a row that can't be scored."""
        if not _has_classes(self.model_):
            raise DocumentError(f"{self.model_!r} has no probabilities of categories")
        return np.column_stack(self._scores(X, "probabilities"))


def PmmlEstimator(
    document: Document | Model, *, policy: Policy | None = None
) -> PmmlRegressor | PmmlClassifier:
    """The estimator that suits the model of a document."""
    model = document if isinstance(document, Model) else load(document)
    kind = PmmlClassifier if model.classes_ else PmmlRegressor
    return kind(document, policy=policy)
