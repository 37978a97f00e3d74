"""The service: started as its page says, and called."""

import concurrent.futures
import io
import os
import pathlib
import socket
import subprocess
import sys
import time

import httpx
import pyarrow as pa
import pyarrow.csv
import pytest
from conftest import BAD_ROW, ROOT, same

ARROW = "application/vnd.apache.arrow.stream"
LIMIT = 2_000_000


@pytest.fixture(scope="module")
def service(document):
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    server = subprocess.Popen(
        [sys.executable, "-m", "uvicorn", "service:app", "--port", str(port), "--log-level", "warning"],
        cwd=ROOT / "examples/python",
        env={**os.environ, "VELSCORE_MODEL": str(document), "VELSCORE_MAX_BODY": str(LIMIT)},
    )
    client = httpx.Client(base_url=f"http://127.0.0.1:{port}", timeout=60, trust_env=False)
    try:
        for _ in range(600):
            assert server.poll() is None, "the service ended"
            try:
                client.get("/model")
                break
            except httpx.ConnectError:
                time.sleep(0.1)
        else:
            pytest.fail("the service doesn't answer")
        yield client
    finally:
        client.close()
        server.terminate()
        server.wait(30)


def post(service, body, form, **options):
    return service.post("/score", content=body, headers={"content-type": form}, params=options)


def test_the_model(service):
    assert service.get("/model").json()["family"] == "binary logistic regression"


def test_json(service, table, expected):
    answer = service.post("/score", json=table.to_pylist(), params={"keep": "id"})
    assert answer.headers["content-type"] == "application/json"
    same(answer.json(), expected)


def test_one_object(service):
    answer = service.post("/score", json={"race": "black", "ht": "no", "age": 19})
    assert answer.json()["prediction"] == "normal"


def test_numbers_that_json_lacks(service):
    answer = post(service, b'[{"race": "black", "ht": "no", "age": NaN}]', "application/json")
    assert answer.status_code == 200
    assert answer.json()[0]["status"] != 0


def test_csv(service, table, expected):
    text = io.BytesIO()
    pa.csv.write_csv(table, text)
    answer = post(service, text.getvalue(), "text/csv; charset=utf-8", keep="id")
    found = pa.csv.read_csv(
        io.BytesIO(answer.content),
        convert_options=pa.csv.ConvertOptions(strings_can_be_null=True, null_values=[""]),
    )
    same(found.to_pylist(), expected)


def test_arrow(service, table, expected):
    sink = io.BytesIO()
    with pa.ipc.new_stream(sink, table.schema) as writer:
        writer.write_table(table, 900)
    answer = post(service, sink.getvalue(), ARROW, keep="id")
    assert answer.headers["content-type"] == ARROW
    same(pa.ipc.open_stream(answer.content).read_all().to_pylist(), expected)


def test_columns_are_chosen(service):
    rows = [{"race": "black", "ht": "no", "age": 19}]
    answer = service.post("/score", json=rows, params={"columns": ["linear_predictor", "prediction"]})
    assert list(answer.json()[0])[:2] == ["linear_predictor", "prediction"]


REFUSED = [
    # body, form, status, a part of the text
    (b"[{]", "application/json", 422, "the body is no table"),
    (b"3", "application/json", 422, "no table"),
    (b'["a"]', "application/json", 422, "no table"),
    (b'[{"race": "black", "ht": "no"}]', "application/json", 422, "age"),
    (b"race,ht,age\nblack,no\n", "text/csv", 422, "record 2 has 2 fields, the header has 3"),
    (b"race,ht,age,age\n", "text/csv", 422, "twice"),
    (b"race,ht\nblack,no\n", "text/csv", 422, "age"),
    (b"", "text/csv", 422, ""),
    (b"\xff\xfe", "text/csv", 422, "no table"),
    (b"no stream", ARROW, 422, "no table"),
    (b"<cases/>", "application/xml", 415, "text/csv"),
    (b"[" + b" " * LIMIT + b"]", "application/json", 413, "more than"),
]


@pytest.mark.parametrize(("body", "form", "status", "text"), REFUSED)
def test_refusals(service, body, form, status, text):
    answer = post(service, body, form)
    assert answer.status_code == status, answer.text
    assert text in answer.text


def test_a_body_of_unknown_length_is_bounded_too(service):
    answer = service.post(
        "/score",
        content=(b" " * 65_536 for _ in range(1 + LIMIT // 65_536)),
        headers={"content-type": "application/json"},
    )
    assert answer.status_code == 413


def test_an_unknown_result_is_refused(service):
    answer = service.post("/score", json=[], params={"columns": "nosuch"})
    assert answer.status_code == 422
    assert "nosuch" in answer.text


def test_requests_side_by_side(service, table, expected):
    def one(first):
        rows = table.slice(first, 500).to_pylist()
        return service.post("/score", json=rows, params={"keep": "id"}).json()

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        parts = list(pool.map(one, range(0, len(table), 500)))
    found = [row for part in parts for row in part]
    assert found[BAD_ROW]["status_field"] == "age"
    same(found, expected)
