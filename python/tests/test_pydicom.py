"""pydicom through us, and pydicom by itself."""
import concurrent.futures
import concurrent.futures.process
import warnings

import numpy as np
import pytest
from conftest import corpus_images

pydicom = pytest.importorskip("pydicom")
import quorvex.pydicom_handler as ours  # noqa: E402

THEIRS = [handler for handler in pydicom.config.pixel_data_handlers if handler is not ours]


def by_handlers(path, handlers):
    before = pydicom.config.pixel_data_handlers
    pydicom.config.pixel_data_handlers = handlers
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")
            return pydicom.dcmread(path).pixel_array
    finally:
        pydicom.config.pixel_data_handlers = before


def by_theirs(path):
    return by_handlers(path, THEIRS)


# JPEG-LS by their GDCM: signed samples without their sign, several frames as one. The frames of these files are held
# by their known hashes in test_images.py.
NOT_READ_BY_THEIRS = {"jls_12s_x2_1f.dcm", "jls_16u_x3_2f.dcm", "jls_8u_rgb_ilv1_x2_2f.dcm", "jlsn_10s_near1_1f.dcm"}


class TheirReader:
    """pydicom with its own handlers, in a process of its own: some files end theirs."""

    def __init__(self):
        self.worker = None
        self.compared = 0

    def read(self, path):
        self.worker = self.worker or concurrent.futures.ProcessPoolExecutor(1)
        try:
            return self.worker.submit(by_theirs, path).result()
        except concurrent.futures.process.BrokenProcessPool:
            self.worker = None
            raise


@pytest.fixture(scope="module")
def their_reader():
    return TheirReader()


@pytest.mark.parametrize("path, expected", corpus_images(), ids=lambda value: getattr(value, "name", ""))
def test_arrays_equal_those_of_pydicom(path, expected, their_reader):
    syntax = expected["header"].get("transfer_syntax", "")
    if not ours.supports_transfer_syntax(syntax) or expected["header"].get("bits_allocated") == 1:
        pytest.skip("pydicom's own")
    if path.name in NOT_READ_BY_THEIRS:
        pytest.skip("other pixels than are stored")
    try:
        known = their_reader.read(path)
    except Exception:  # whatever its handlers raise for what they do not read
        pytest.skip("pydicom does not read it")
    found = by_handlers(path, [ours])
    assert found.shape == known.shape and found.dtype == known.dtype
    assert np.array_equal(found, known)
    their_reader.compared += 1


def test_enough_was_compared(their_reader):
    assert not corpus_images() or their_reader.compared >= 40


def test_it_is_asked_first(samples, tmp_path):
    quorvex = pytest.importorskip("quorvex")
    before = pydicom.config.pixel_data_handlers
    ours.register()
    try:
        assert pydicom.config.pixel_data_handlers[0] is ours
        native = pydicom.dcmread(samples / "ct.dcm").pixel_array
        for target in ("jpegls-lossless", "htj2k-lossless", "jpegxl-lossless", "deflated-frames", "encapsulated"):
            if not quorvex.can_write(target):
                continue
            quorvex.convert(samples / "ct.dcm", tmp_path / f"{target}.dcm", to=target)
            assert np.array_equal(pydicom.dcmread(tmp_path / f"{target}.dcm").pixel_array, native), target
    finally:
        pydicom.config.pixel_data_handlers = before
