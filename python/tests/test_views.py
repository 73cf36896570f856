"""Pictures, states, series, volumes and conversions."""
import shutil

import numpy as np
import pytest

import quorvex


def test_a_window_maps_values_to_grey(samples):
    with quorvex.open(samples / "ct.dcm") as image:
        picture = image.render(window=(40, 400))
        assert picture.shape == (image.rows, image.columns, 3) and picture.dtype == np.uint8
        values = image.values()
        assert not picture[values <= -160].any() and (picture[values >= 240] == 255).all()
        inside = (values > -159) & (values < 239)
        grey = (values[inside] + 160) / 399 * 255
        assert np.abs(picture[inside][:, 0] - grey).max() <= 1
        assert np.array_equal(image.render(window=(40, 400), invert=True), 255 - picture)
        assert np.array_equal(image.render(window=(40, 400), rotation=90), np.rot90(picture, -1))
        assert np.array_equal(image.render(window=(40, 400), flip=True), picture[:, ::-1])


def test_colours_are_red_green_blue(samples):
    with quorvex.open(samples / "ultrasound_loop.dcm") as image:
        assert np.array_equal(image.render(2), image.frame(2))


def test_thumbnails_and_png(samples):
    with quorvex.open(samples / "radiograph.dcm") as image:
        small = image.thumbnail((100, 100))
        assert small.shape[2] == 3 and max(small.shape[:2]) == 100 and small.std() > 10
        assert image._repr_png_().startswith(b"\x89PNG")


def test_a_state_shows_what_was_seen(samples, tmp_path):
    with quorvex.open(samples / "ct.dcm") as image, quorvex.View((400, 300)) as view:
        view.show(image)
        view.set(window=(60, 350.5), rotation=90, invert=True)
        assert view.window == (60, 350.5)
        seen = view.render()
        view.write_state(tmp_path / "state.dcm", texts=((50, 60, "here"),), lines=(((1, 1), (90, 80)),))
        assert np.array_equal(image.render(size=(400, 300), state=tmp_path / "state.dcm"), seen)
        marked = image.render(size=(400, 300), state=tmp_path / "state.dcm", annotations=True)
        assert not np.array_equal(marked, seen)


def test_series_come_in_order(samples):
    images = [image.text(0x00080060) for image in quorvex.series(samples)]
    assert sorted(images) == ["CR", "CT", "US"]


def slices_in(folder, samples, places, **changes):
    pydicom = pytest.importorskip("pydicom")
    for number, place in enumerate(places):
        dataset = pydicom.dcmread(samples / "ct.dcm")
        dataset.ImageOrientationPatient = [1, 0, 0, 0, 1, 0]
        dataset.ImagePositionPatient = [-10, -20, place]
        dataset.PixelSpacing = [0.7, 0.8]
        dataset.SOPInstanceUID = f"2.25.{number + 1}"
        if number == 1:
            for keyword, value in changes.items():
                setattr(dataset, keyword, value)
        dataset.save_as(folder / f"{100 - number}.dcm")


def test_a_volume_lies_in_the_order_of_its_slices(samples, tmp_path):
    slices_in(tmp_path, samples, (7.5, 0, 2.5, 5))
    (tmp_path / "notes.txt").write_text("no image")
    found = quorvex.volume(tmp_path)
    assert found.values.shape == (4, 512, 512) and found.spacing == (2.5, 0.7, 0.8)
    assert found.origin == (-10, -20, 0) and [p[-7:-4] for p in found.paths] == ["/99", "/98", "/97", "100"]


@pytest.mark.parametrize("places, changes, sentence", [
    ((0, 1, 2, 4), {}, "missing"), ((0, 1, 1), {}, "same place"),
    ((0, 1, 2), {"SeriesInstanceUID": "2.25.9"}, "another series"),
    ((0, 1, 2), {"ImageOrientationPatient": [0, 1, 0, 0, 0, 1]}, "another orientation"),
    ((0, 1, 2), {"PixelSpacing": [0.7, 0.9]}, "another pixel spacing"),
    ((0, 1, 2), {"ImagePositionPatient": None}, "where it lies")])
def test_what_is_no_volume_is_refused_with_a_sentence(samples, tmp_path, places, changes, sentence):
    slices_in(tmp_path, samples, places, **changes)
    with pytest.raises(quorvex.VolumeError, match=sentence):
        quorvex.volume(tmp_path)


def test_a_folder_is_converted_by_several_workers(samples, tmp_path):
    source = tmp_path / "in"
    shutil.copytree(samples, source)
    (source / "broken.dcm").write_bytes(b"\0" * 400)
    told = []
    result = quorvex.convert(source, tmp_path / "out", to="rle", jobs=3,
                             progress=lambda done, count: told.append((done, count)))
    assert [failure.path for failure in result.failed if failure.path.endswith("broken.dcm")]
    assert told[-1] == (len(told), len(told))
    for path in result.written:
        with quorvex.open(path) as made, quorvex.open(path.replace("/out/", "/in/")) as image:
            assert made.text(0x00020010) == "1.2.840.10008.1.2.5"
            assert np.array_equal(made.frame(), image.frame())
    assert len(result.written) >= 3
    with pytest.raises(ValueError, match="no target"):
        quorvex.convert(source, tmp_path / "out", to="nothing")
