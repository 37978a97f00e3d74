"""Scores tables of cases with regression models that were fitted elsewhere.

>>> import velscore
>>> model = velscore.load("examples/motor-cars/model.pmml")
>>> model.predict([{"wt": 2.62, "hp": 110, "cyl": 6, "am": "manual"}])
[22.189600083829404]
"""

from ._errors import DocumentError, DocumentWarning, Error, OptionError, TableError
from ._model import Model, check, load, scan_csv
from ._report import report
from ._velscore import Scorer, Stream, Table
from ._velscore import version as __version__

__all__ = [
    "DocumentError",
    "DocumentWarning",
    "Error",
    "Model",
    "OptionError",
    "Scorer",
    "Stream",
    "Table",
    "TableError",
    "check",
    "load",
    "report",
    "scan_csv",
    "__version__",
]
