"""Images against what is known of them."""
import concurrent.futures
import hashlib
import pickle
import subprocess
import sys

import numpy as np
import pytest
from conftest import ROOT, corpus_images

import quorvex


def test_declarations_are_those_of_the_header():
    subprocess.run([sys.executable, ROOT / "scripts/make_python_declarations.py", "--check"], check=True)


def test_frames_are_read_only_and_of_their_own_type(samples):
    with quorvex.open(samples / "ct.dcm") as image:
        frame = image.frame(0)
        assert frame.shape == (image.rows, image.columns) == image.shape
        assert frame.dtype == np.uint16
        with pytest.raises(ValueError):
            frame[0, 0] = 1
        assert "CT" in repr(image) and "512x512" in repr(image)
    with pytest.raises(ValueError, match="closed"):
        image.frame(0)


def test_values_are_in_modality_units(samples):
    with quorvex.open(samples / "ct.dcm") as image:
        units = image.modality()
        stored = image.frame().astype(np.int32) & ((1 << image.bits_stored) - 1)
        values = image.values()
        assert values.dtype == np.int32
        assert np.array_equal(values, stored * units.slope + units.intercept)
        assert values.min() == -1024  # air


def test_bytes_are_as_good_as_a_file(samples):
    data = (samples / "ultrasound_loop.dcm").read_bytes()
    with quorvex.open(data) as image, quorvex.open(samples / "ultrasound_loop.dcm") as file:
        assert len(image) == len(file) == 4
        for index in range(4):
            assert np.array_equal(image.frame(index), file.frame(index))
        assert np.array_equal(image.region(3, 5, 40, 17, frame=2), image.frame(2)[5:17, 3:40])


def test_attributes(samples):
    with quorvex.open(samples / "ct.dcm") as image:
        assert image.text(0x00080060) == "CT"
        assert image.text(0x00091001) is None and image.number(0x00091001) is None
        assert tuple(image.numbers(0x00280030)) == image.spacing
        assert len(image.texts(0x00080008)) > 1


def test_failures_are_told_by_code_and_name(samples, tmp_path):
    with pytest.raises(quorvex.Error) as caught:
        quorvex.open(tmp_path / "none.dcm")
    assert caught.value.code == 10 and "none.dcm" in str(caught.value)
    assert pickle.loads(pickle.dumps(caught.value)).code == 10
    (tmp_path / "text.dcm").write_text("no image at all, and long enough to be read " * 20)
    with pytest.raises(quorvex.Error) as caught:
        quorvex.open(tmp_path / "text.dcm")
    assert caught.value.name == "QVM_ERROR_FAILED_TO_PARSE_DICOM"
    with quorvex.open(samples / "ct.dcm") as image:
        with pytest.raises(quorvex.Error):
            image.frame(1)
        image.cancel()
        with pytest.raises(quorvex.Cancelled):
            image.frame(0)
        image.resume()
        image.frame(0)


def test_a_cut_frame_is_no_frame_unless_asked_for(samples, tmp_path):
    whole = (samples / "ct.dcm").read_bytes()
    (tmp_path / "cut.dcm").write_bytes(whole[:-100_000])
    with quorvex.open(tmp_path / "cut.dcm") as image, quorvex.open(samples / "ct.dcm") as sound:
        with pytest.raises(quorvex.Error):
            image.frame()
        part = image.frame(allow_partial=True)
        assert np.array_equal(part[:200], sound.frame()[:200])
        assert not part[-1].any()


def test_one_image_serves_many_threads(samples):
    with quorvex.open(samples / "ultrasound_loop.dcm") as image:
        expected = [image.frame(index) for index in range(4)]
        with concurrent.futures.ThreadPoolExecutor(8) as workers:
            frames = list(workers.map(image.frame, [0, 1, 2, 3] * 50))
        assert all(np.array_equal(frame, expected[i % 4]) for i, frame in enumerate(frames))


@pytest.mark.parametrize("path, expected", corpus_images(), ids=lambda value: getattr(value, "name", ""))
def test_real_files_have_the_frames_that_are_known(path, expected):
    header = expected["header"]
    if header.get("bits_allocated") not in (8, 16):
        pytest.skip("the hashes count packed bytes")
    with quorvex.open(path) as image:
        for frame in expected["pixels"]["frames"]:
            found = image.frame(frame["index"], allow_partial=True)
            little = found.astype(found.dtype.newbyteorder("<"), copy=False).tobytes()
            known = {frame.get(key) for key in ("sha256", "sha256_values", "values_sha256")} - {None}
            if hashlib.sha256(little).hexdigest() in known:
                continue
            values = image_values(found, image)
            assert hashlib.sha256(values.tobytes()).hexdigest() in known, (path.name, frame["index"])


def image_values(frame, image):
    """The bits that are stored, with their sign."""
    unused = 8 * frame.dtype.itemsize - image.bits_stored
    return (frame << unused) >> unused
