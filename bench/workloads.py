"""The workloads that bench/compare.py times: what is in them, and making their files.

The same seed gives the same bytes. A workload in one number format is a folder WORKLOAD-FORMAT with its
files and a manifest; it is made once and kept until this file or the generator of the samples changes.
"""
import argparse
import hashlib
import json
import pathlib
import random
import sys

sys.dont_write_bytecode = True
TOOLS = pathlib.Path(__file__).resolve().parent.parent / "tools"
sys.path.insert(0, str(TOOLS))
import make_samples  # noqa: E402

SEED = 1
FORMATS = [*make_samples.FORMATS, "mix"]
FINE_BAND, DETECTORS = 4, make_samples.MOST_DETECTORS
# Pixels that make a file of 20 KB in each format.
PIXELS_OF_20_KB = {"short": 38, "sci9": 19, "full17": 18, "mix": 23}
# Configurations and pixels of the 13 files of a set in the sizes that sets have: 1.7 to 30 MB.
REAL_SIZES = ((4, 648), (8, 1944), (10, 2592), (12, 3744), (5, 1296), (6, 1296), (7, 1296), (8, 2592),
              (9, 1944), (10, 1944), (8, 1296), (6, 2592), (7, 2592))
VARIETY = 8  # different configurations in a file of repeated ones


def single(band_id, **changes):
    """Lines of one file as the generator of the samples makes it."""
    settings = {"seed": SEED, "pixels": None, "detectors": DETECTORS, "configs": 1,
                "root": "TEST_EQ_TABLE", "nuc_table_id": 7, **changes}
    return make_samples.file_lines(argparse.Namespace(**settings), band_id)


def repeated(size, number_format):
    """Pieces of text of one file of about `size` bytes: configurations of a fine band, repeated."""
    frame = list(single(FINE_BAND, configs=0, format=number_format))
    end = frame.index("  </DATA>")
    pixels = make_samples.BANDS[FINE_BAND - 1][1]
    bodies = []
    for index in range(VARIETY):
        rng = random.Random(f"{SEED}/{index}/{number_format}")
        lines = [line for detector in range(1, DETECTORS + 1)
                 for line in make_samples.detector_lines(rng, detector, pixels, number_format)]
        bodies.append("\n".join(lines) + "\n    </COEFFICIENTS_LIST>\n")
    yield "\n".join(frame[:end]) + "\n"
    written = 0
    for index in range(sys.maxsize):
        if written >= size:
            break
        piece = f'    <COEFFICIENTS_LIST tdi_config="STEP_{index + 1}">\n' + bodies[index % VARIETY]
        written += len(piece)
        yield piece
    yield "\n".join(frame[end:]) + "\n"


def whole(lines):
    return (line + "\n" for line in lines)


def tiny(form):
    yield "EQ_B04.xml", whole(single(FINE_BAND, detectors=2, pixels=3, format=form))


def band(form):
    yield "EQ_B04.xml", whole(single(FINE_BAND, configs=3, format=form))


def set13(form):
    for band_id, (name, _, _) in enumerate(make_samples.BANDS, start=1):
        yield f"EQ_{name}.xml", whole(single(band_id, configs=2, format=form))


def real13(form):
    bands = zip(REAL_SIZES, make_samples.BANDS)
    for band_id, ((configs, pixels), (name, _, _)) in enumerate(bands, start=1):
        yield f"EQ_{name}.xml", whole(single(band_id, configs=configs, pixels=pixels, format=form))


def many(form):
    for index in range(2000):
        yield f"EQ_{index:04}.xml", whole(single(
            index % len(make_samples.BANDS) + 1, seed=f"{SEED}.{index}",
            pixels=PIXELS_OF_20_KB[form], format=form))


def manyelem(form):
    yield "EQ_B04.xml", whole(single(FINE_BAND, configs=5000, pixels=1, format=form))


def big(form):
    yield "EQ_B04.xml", repeated(1_000_000_000, form)


def big30(form):
    yield "EQ_B04.xml", repeated(30_000_000, form)


WORKLOADS = {make.__name__: make for make in (tiny, band, set13, real13, many, manyelem, big, big30)}


def elements(path):
    """The number of elements in a file without CDATA sections, and with no < in its comments."""
    count = 0
    with path.open("rb") as file:
        tail = b""
        while block := file.read(1 << 24):
            text = tail + block
            count += text.count(b"<") - sum(text.count(mark) for mark in (b"</", b"<!", b"<?"))
            # A < at the very end is counted with the next block, which tells its kind.
            tail = b"<" if text.endswith(b"<") else b""
            count -= len(tail)
    return count


def key():
    sources = [pathlib.Path(__file__).resolve(), TOOLS / "make_samples.py"]
    return hashlib.sha256(b"".join(source.read_bytes() for source in sources)).hexdigest()


def made(root, name, form):
    """Returns (folder, manifest) of a workload in one format; makes it when it is not there.

    The manifest holds "files", their total "bytes", and "memory": the largest, over the files, of
    its size and 32 bytes for each of its elements.
    """
    folder = pathlib.Path(root) / f"{name}-{form}"
    record = folder / "manifest.json"
    if record.exists():
        manifest = json.loads(record.read_text())
        if manifest["key"] == key():
            return folder, manifest
        record.unlink()
    print(f"making {folder.name}", file=sys.stderr, flush=True)
    folder.mkdir(parents=True, exist_ok=True)
    manifest = {"key": key(), "files": [], "bytes": 0, "memory": 0}
    for file_name, pieces in WORKLOADS[name](form):
        path = folder / file_name
        with path.open("w", encoding="utf-8", newline="\n") as out:
            out.writelines(pieces)
        size = path.stat().st_size
        manifest["files"].append(file_name)
        manifest["bytes"] += size
        manifest["memory"] = max(manifest["memory"], size + 32 * elements(path))
    record.write_text(json.dumps(manifest))
    return folder, manifest
