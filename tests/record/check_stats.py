#!/usr/bin/env python3
"""Holds the figures and outliers that eqrecord tells against numpy and a plain model, and the three formats against
each other. usage: check_stats.py EQRECORD"""
import csv, io, json, jsonschema, numpy, os, pathlib, subprocess, sys, tempfile

import records

ROOT = pathlib.Path(__file__).resolve().parents[2]
EQRECORD = os.path.abspath(sys.argv[1])
SCHEMA = jsonschema.Draft202012Validator(json.loads((ROOT / "docs/eqrecord-stats-1.schema.json").read_text()))
NAN, INF, HUGE = float("nan"), float("inf"), sys.float_info.max
COUNTS = "values", "nan", "infinite", "length"
FIGURES = "min", "max", "mean", "median", "standard_deviation", "mad", "odd_less_even"
rng = numpy.random.default_rng(1)


def run(*arguments, status=0):
    done = subprocess.run([EQRECORD, "stats", *arguments], capture_output=True, timeout=60, text=True)
    assert done.returncode == status and (status == 2) == bool(done.stderr), (arguments, done)
    return done.stdout


# Writes 48 vectors, which are filled up, and returns what is told of each.
def stats_of(vectors, *options, status=0):
    pixels = max(map(len, vectors), default=0)
    values = numpy.full((48, pixels), NAN)
    for row, vector in zip(values, vectors):
        row[:len(vector)] = vector
    bits = values.view("u8").ravel().tolist()
    part = {"label": "ALL", "epsilon": 0.5, "pixels": pixels, "bits": bits}
    file = {"nuc_table_id": 7, "band": 4, "name": "a,b", "configurations": [part]}
    pathlib.Path("record").write_bytes(records.bytes_of({"files": [file]}))
    value = json.loads(run("--format", "json", *options, "record", status=status))
    SCHEMA.validate(value)
    return value["configurations"][0]["vectors"]


# The figures by numpy, with more digits, and less what all values have in common.
def figures_of(values):
    at = numpy.flatnonzero(numpy.isfinite(values))
    kept = values[at]
    counts = [len(at), int(numpy.isnan(values).sum()), int(numpy.isinf(values).sum()),
              max(numpy.flatnonzero(~numpy.isnan(values)), default=-1) + 1]
    if not len(at):
        return counts, [None] * 7
    apart = kept.astype("longdouble") - kept[0]
    odd, even = apart[at % 2 == 0], apart[at % 2 == 1]
    scale = 8 if numpy.abs(kept).max() > HUGE / 8 else 1
    small = kept / scale
    figures = [kept.min(), kept.max(), apart.mean() + kept[0], numpy.median(small) * scale, apart.std(),
               numpy.median(numpy.abs(small - numpy.median(small))) * scale, odd.mean() - even.mean() if len(odd) and len(even) else None]
    with numpy.errstate(over="ignore"):
        return counts, [None if figure is None else float(figure) for figure in figures]


def check_figures(vectors, *options, first=1):
    # What is next to nothing, compared to what it is a difference of, has its last digits from that.
    def is_close(found, wanted, spread):
        if found is None or wanted is None or wanted == float(found):
            return found is wanted is None or wanted == float(found)
        return abs(found - wanted) <= 1e-12 * abs(wanted) + 1e-16 * spread

    for found, vector in zip(stats_of(vectors, *options), vectors):
        counts, figures = figures_of(numpy.where(numpy.arange(len(vector)) < first - 1, NAN, vector))
        counts[1] = max(map(len, vectors)) - first + 1 - counts[0] - counts[2]
        counts[3] = max(counts[3] - first + 1, 0)
        assert [found[name] for name in COUNTS] == counts, (found, counts)
        assert all(is_close(found[name], figure, figures[4]) for name, figure in zip(FIGURES, figures)), (found, figures, vector)


# As the rule says it, value by value.
def outliers_of(values, sigma, window):
    scaled = values / 8 if any(HUGE / 8 < abs(value) < INF for value in values) else values
    medians = []
    for i in range(len(values)):
        near = [scaled[k] for k in range(i % 2, len(values), 2) if abs(k - i) <= window and numpy.isfinite(values[k])]
        medians.append(numpy.median(near) if near else NAN)
    distances = scaled - numpy.array(medians)
    kept = distances[numpy.isfinite(values)]
    limit = sigma * 1.4826 * numpy.median(numpy.abs(kept - numpy.median(kept))) if len(kept) else 0
    return [i + 1 for i, value in enumerate(values) if abs(value) == INF or abs(distances[i]) > limit]


def check_outliers(vectors, sigma, window):
    count = 0
    options = ["--sigma", str(sigma), "--window", str(window), "--fail-on-outliers"]
    for found, vector in zip(stats_of(vectors, *options, status=1), vectors):
        pixels = [outlier["pixel"] for outlier in found["outliers"]]
        assert pixels == outliers_of(vector, sigma, window), (pixels, vector)
        assert all(float(outlier["value"]) == vector[outlier["pixel"] - 1] for outlier in found["outliers"])
        count += len(pixels)
    return count


# What coefficients look like: they slope across a detector, and its odd and even pixels have their own levels.
def check_steps():
    pixel = numpy.arange(2592)
    vectors = 1 + 0.1 * pixel / 2592 + 0.01 * (pixel % 2) + rng.normal(0, 0.002, (48, 2592))
    assert not any(found["outliers"] for found in stats_of(vectors, "--fail-on-outliers"))
    at = rng.integers(5, 2587, 12)
    vectors[range(12), at] += 0.04
    found = stats_of(vectors, "--outliers")
    assert [[outlier["pixel"] for outlier in part["outliers"]] for part in found] == [[i + 1] for i in at] + [[]] * 36
    for pixels, seen in ((f"{at[2] + 1}-{at[2] + 5}", found[2]["outliers"]), (f"{at[2] - 4}-{at[2]}", [])):
        part, = stats_of(vectors, "--outliers", "--detector", "3", "--kind", "A1", "--pixel", pixels)
        assert part["outliers"] == seen and part["length"] == 5, part


def made_vectors():
    for shift, spread in ((0, 1), (1, 1e-3), (1e9, 1e-3), (-1e15, 1), (0, 1e-310), (0, 1e150), (1e300, 1e290), (0, 1e307), (1e-300, 1e-308)):
        for length in (1, 2, 3, 10, 997):
            yield numpy.clip(shift + spread * rng.normal(0, 1, length), -HUGE, HUGE)
    yield from map(numpy.array, ([HUGE] * 5, [-HUGE, HUGE] * 4, [HUGE, -HUGE, HUGE, HUGE], [5e-324, 0, 5e-324], [-0.0] * 3, [0.1] * 7, [1e308, 1e-300, 3e-300],
                                 [NAN, INF, 1, NAN, -INF, 2, 3, NAN], [INF], [NAN, 4], []))
    values = numpy.array([NAN, INF, -INF, HUGE, -HUGE, 0, -0.0, 1, 2, 3, 1e-3, 5e-324])
    for length in rng.integers(1, 90, 40):
        vector = rng.choice(values, length) if length % 3 == 0 else rng.normal(0, 1, length).round(1)
        yield numpy.where(rng.random(length) < 0.1, rng.choice(values, length), vector)


# The sample as people see it, CSV as JSON has it, and what can't be asked for.
def check_formats():
    sample = str(ROOT / "samples/EQ_B4.record")
    part = ["{:5}  min  max  mean  median  deviation  MAD  odd-even", "  1-2  {0:>3}  {0:>3}  {0:>4}  {0:>6}          0    0         0",
            " 3-12  no values"]
    table = ["file 1, band 4, EQ_B4.xml, ALL: 3 pixels", part[0].format("A1"), "  1-2    1    3     2       2      0.816    1         0", part[2]]
    for kind, value in (("A2", "0"), ("ZS", "5"), ("D", "1.5")):
        table += [part[0].format(kind), part[1].format(value), part[2]]
    assert run(sample).splitlines() == table, run(sample)
    assert run("--outliers", sample).splitlines() == [*table, "", "0 outliers in 8 vectors"]
    found = stats_of([numpy.array([1, 1, 1, 1, 1, 1, 9, NAN, INF])], "--outliers")
    rows = list(csv.DictReader(io.StringIO(run("--format", "csv", "--outliers", "record"))))
    names = dict.fromkeys(("name", "configuration"))
    for row, part in zip(rows, found, strict=True):
        assert [row["file"], row["band"], row["name"], row["configuration"]] == ["1", "4", "a,b", "ALL"], row
        assert row["outlier_pixels"] == " ".join(str(outlier["pixel"]) for outlier in part.pop("outliers")), row
        assert {name: row[name] for name in part} == {name: "" if value is None else str(value) for name, value in part.items()}, (row, part)
    told = run("--outliers", "--detector", "1", "--kind", "A1", "record")
    assert told.partition("odd-even\n")[2] == ("""\
    1    1    9  2.1429       1        2.8    0         2
       7 values, 1 infinite, 1 NaN, length 9
       outlier at pixel 7: 9, median nearby 1
       outlier at pixel 9: inf, median nearby 1

2 outliers in 1 of 1 vector
"""), told
    for options in (["--sigma", "0"], ["--sigma", "nan"], ["--window", "1"], ["--band", "5"], ["--pixel", "4-5"], ["--format", "xml"], ["missing"]):
        assert run(*options, sample, status=2) == "", options


def main():
    vectors = list(made_vectors())
    for start in range(0, len(vectors), 48):
        check_figures(vectors[start:start + 48])
        check_figures(vectors[start:start + 48], "--pixel", "4-32767", first=4)
    assert stats_of([])[0]["mean"] is None
    counts = [check_outliers(vectors[-40:], *rule) for rule in ((6, 24), (3, 24), (1.5, 2), (2, 7), (0.5, 32767))]
    check_steps()
    check_formats()
    print(f"{len(vectors)} vectors, {counts} outliers")


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    main()
