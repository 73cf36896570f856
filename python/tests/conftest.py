"""Where the tests find their images."""
import json
import os
import pathlib
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "python"))
os.environ.setdefault("QUORVEX_LIBRARY", str(ROOT / "build/release/lib/libQuorvexU.so"))
CORPUS = pathlib.Path(os.environ.get("QUORVEX_CORPUS", ROOT.parent / "shared/corpus"))


@pytest.fixture
def samples():
    return ROOT / "samples"


def corpus_images(kind="lossless"):
    """(path, its part of the manifest) of the real files; none without a corpus."""
    images = []
    for folder in (CORPUS, CORPUS / "made"):
        manifest = folder / "MANIFEST.json"
        if not manifest.exists():
            continue
        for entry in json.loads(manifest.read_text())["files"]:
            expected = entry["expect"]
            if expected.get("load") == "ok" and expected.get("pixels", {}).get("kind") == kind:
                images.append((folder / (entry.get("file") or f"files/{entry['name']}"), expected))
    return images
