"""VDA record files: read and written back, validation."""

import io

import pytest

import ediprot
from conftest import SAMPLES

VDA = [("vda4905-sample.txt", "TRANSMISSION.S511.customer", "47110    ", "VDA 4905"),
       ("vda4913-sample.txt", "TRANSMISSION.S711.rectype", "711", "VDA 4913")]


@pytest.mark.parametrize("name,path,value,family", VDA, ids=[v[0] for v in VDA])
@pytest.mark.parametrize("kind", ["path", "bytes", "file"])
def test_round_trip(tmp_path, name, path, value, family, kind):
    sample = SAMPLES / name
    data = sample.read_bytes()
    source = {"path": sample, "bytes": data, "file": io.BytesIO(data)}[kind]
    doc = ediprot.vda_read(source)
    assert doc.name == "vda" and doc.value_at(path) == value
    assert doc.file == (str(sample) if kind == "path" else "input")
    assert [f.kind for f in doc.findings] == ["note"] and family in doc.findings[0].text
    assert all(f.file == doc.file for f in doc.findings)
    target = tmp_path / "out.txt"
    assert ediprot.vda_write(doc, target) == data == target.read_bytes()
    # Plain data back to a tree writes the same file.
    rebuilt = ediprot.Node.from_dict("vda", doc.to_dict())
    assert ediprot.vda_write(rebuilt) == data


def test_validate():
    data = (SAMPLES / "vda4905-sample.txt").read_bytes()
    assert ediprot.validate(data) == [] == ediprot.validate(SAMPLES / "vda4913-sample.txt")
    line = data.split(b"\r\n")[1]
    bad = data.replace(line, line[:20] + b"XX" + line[22:])
    (f,) = ediprot.validate(bad, name="bad.txt")
    assert (f.kind, f.file, f.tag, f.element) == ("validation", "bad.txt", "512", "calloffdatenew")
    assert "not a number" in f.text


@pytest.mark.parametrize("call,exc,words", [
    (lambda: ediprot.vda_read(b"hello\n"), ediprot.ReadError, "holds no VDA record"),
    (lambda: ediprot.vda_read(SAMPLES / "missing.txt"), ediprot.ReadError, "cannot be read"),
    (lambda: ediprot.vda_write(ediprot.read(SAMPLES / "orders-d96a.edi")[0].tree),
     ediprot.WriteError, "no VDA tree"),
    (lambda: ediprot.vda_write(ediprot.Node("vda", "\u20ac")), ediprot.WriteError, "has no code for"),
])
def test_failures(call, exc, words):
    with pytest.raises(exc, match=words) as err:
        call()
    assert err.value.findings or isinstance(err.value.__cause__, ValueError)
