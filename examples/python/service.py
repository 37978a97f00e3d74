"""A service that scores over HTTP, with FastAPI.

    VELSCORE_MODEL=model.pmml uvicorn service:app --workers 2

    POST /score with a table as its body, by its Content-Type:
        application/json                         a list of objects, or one object
        text/csv                                 with a header
        application/vnd.apache.arrow.stream      needs pyarrow
    The answer is in the same form: of each row the results, its status (0: scored) and, where that
    isn't 0, status_field, the column at fault. So a bad row never costs its neighbours their scores.
    `?keep=id` repeats columns in front, `?columns=prediction` chooses results.
    GET /model tells what the model is.

A body above VELSCORE_MAX_BODY bytes, 16 MiB by default, is refused with 413 before it is read; what
is no table, or lacks a column that the model reads, with 422 and a sentence that says what to do.
"""

from __future__ import annotations

import csv
import io
import json
import math
import os
from collections.abc import Callable, Iterable
from typing import Any

from fastapi import FastAPI, HTTPException, Query, Request, Response
from fastapi.concurrency import run_in_threadpool

import velscore

JSON = "application/json"
CSV = "text/csv"
ARROW = "application/vnd.apache.arrow.stream"
MAX_BODY = int(os.environ.get("VELSCORE_MAX_BODY", 16 * 2**20))

app = FastAPI(title="velscore")
model = velscore.load(os.environ["VELSCORE_MODEL"])


def score_json(body: bytes, **options: Any) -> bytes:
    cases = json.loads(body)
    rows = cases if isinstance(cases, list) else [cases]
    scored = model.score(rows, **options)
    # JSON has neither NaN nor infinities.
    finite = [
        {n: None if isinstance(v, float) and not math.isfinite(v) else v for n, v in row.items()}
        for row in scored
    ]
    return json.dumps(finite if isinstance(cases, list) else finite[0]).encode()


def score_csv(body: bytes, **options: Any) -> bytes:
    rows = csv.reader(io.StringIO(body.decode("utf-8-sig"), newline=""))
    names = next(rows, [])
    cells = list(rows)
    for number, row in enumerate(cells, start=2):
        if len(row) != len(names):
            raise ValueError(f"record {number} has {len(row)} fields, the header has {len(names)}")
    columns = dict(zip(names, map(list, zip(*cells)))) if cells else {name: [] for name in names}
    if len(columns) != len(names):
        raise ValueError("the header has a name twice")
    scored = model.score(columns, **options)
    text = io.StringIO()
    writer = csv.writer(text, lineterminator="\n")
    writer.writerow(scored)
    writer.writerows(zip(*scored.values()))
    return text.getvalue().encode()


def score_arrow(body: bytes, **options: Any) -> bytes:
    import pyarrow as pa

    with pa.ipc.open_stream(body) as table:
        scored = model.score(table.read_all(), **options)
    sink = io.BytesIO()
    with pa.ipc.new_stream(sink, scored.schema) as writer:
        writer.write_table(scored)
    return sink.getvalue()


FORMS: dict[str, Callable[..., bytes]] = {JSON: score_json, CSV: score_csv, ARROW: score_arrow}


async def body_of(request: Request) -> bytes:
    """The body, of which no more is read than may be."""
    body = bytearray()
    said = request.headers.get("content-length", "0")
    too_large = said.isdecimal() and int(said) > MAX_BODY
    if not too_large:
        async for part in request.stream():
            body += part
            too_large = len(body) > MAX_BODY
            if too_large:
                break
    if too_large:
        raise HTTPException(413, f"the body has more than {MAX_BODY} bytes; send the table in parts")
    return bytes(body)


@app.post("/score")
async def score(
    request: Request, keep: list[str] = Query([]), columns: list[str] = Query([])
) -> Response:
    form = request.headers.get("content-type", JSON).partition(";")[0].strip().lower()
    if form not in FORMS:
        raise HTTPException(415, f"{form} is no form of tables here; expected is {', '.join(FORMS)}")
    body = await body_of(request)
    try:
        # On a thread of its own: other requests go on meanwhile.
        answer = await run_in_threadpool(FORMS[form], body, keep=keep, columns=columns or None)
    except velscore.Error as error:
        detail = {"text": str(error), "code": error.code, "field": error.field}
        raise HTTPException(422, detail) from error
    except (ValueError, TypeError, AttributeError) as error:
        raise HTTPException(422, {"text": f"the body is no table: {error}"}) from error
    return Response(answer, media_type=form)


@app.get("/model")
def about() -> dict[str, Any]:
    return model.inspect()
