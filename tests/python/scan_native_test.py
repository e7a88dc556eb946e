"""The table of fringix-scan's exports is that of the library and of its header."""

import ctypes
import pathlib
import re

import pytest

from fringix import _scan_native as native
from fringix import errors

ROOT = pathlib.Path(__file__).resolve().parents[2]


def declared():
    """Of each function of scan.h how many parameters it has."""
    text = re.sub(r"/\*.*?\*/", "", (ROOT / "include/fringix/scan.h").read_text(encoding="utf-8"), flags=re.DOTALL)
    functions = re.findall(r"FRINGIX_SCAN_API\s+[\w*\s]+?\s\*?(SL\w+)\(([^)]*)\);", text)
    return {name: 0 if parameters.strip() == "void" else parameters.count(",") + 1 for name, parameters in functions}


def test_table_has_every_export_and_no_other():
    exported = re.findall(r"^\s+(SL\w+)", (ROOT / "scan/resources/fringix-scan.def").read_text(encoding="utf-8"), flags=re.MULTILINE)
    assert sorted(native.EXPORTS) == sorted(exported)


def test_each_export_has_the_parameters_of_the_header():
    assert {name: len(arguments) for name, (_, arguments) in native.EXPORTS.items()} == declared()


@pytest.mark.parametrize("record", ["Plan", "Picture", "Optics", "Calibration", "Settings", "Findings", "Cloud"])
def test_each_record_has_the_members_of_the_header(record):
    text = (ROOT / "include/fringix/scan.h").read_text(encoding="utf-8")
    (body,) = re.findall(rf"typedef struct SLScan{record} {{(.*?)}} SLScan{record};", text, flags=re.DOTALL)
    members = re.sub(r"/\*.*?\*/", "", body, flags=re.DOTALL)
    names = re.findall(r"(\w+)(?:\[\w+\])?;", members)
    assert [name for name, *_ in getattr(native, f"SLScan{record}")._fields_] == names


def test_library_tells_its_version():
    assert native.version() > (0, 0, 0, 0)


def test_failure_tells_status_and_reason():
    with pytest.raises(errors.BadParameterError, match="7 columns; 16 to 16384 are possible") as failure:
        native.call("SLScanPlanPictureCount", native.SLScanPlan(0, 7, 10, 10), ctypes.c_int32())
    assert (failure.value.operation, failure.value.code) == ("SLScanPlanPictureCount", -3)
