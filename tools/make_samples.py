#!/usr/bin/env python3
"""Writes realistic parameter files, one for each spectral band, as input for eqconvert.

The files of one call belong together: they share the root element and the NUC table identifier, so
that eqconvert takes them in one run. The same arguments give the same bytes, and a band's file does
not depend on which other bands are asked for. Examples:

    tools/make_samples.py --out set                        # the whole set: 13 bands, 34 MB
    tools/make_samples.py --bands B02,B09 --configs 1 --out small
    tools/make_samples.py --bands B05 --format full17 --seed 7 --out precise
    tools/make_samples.py --bands B05 --pixels 40 --configs 1 --defects --out defects

The band files in samples/ were made with

    tools/make_samples.py --bands B02 --detectors 2 --configs 2 --out samples
    tools/make_samples.py --bands B09 --pixels 96 --configs 3 --format mix --out samples
"""

import argparse
import math
import pathlib
import random

# Name, pixels of one detector and EPSILON of each band; the position in the list is its BAND_ID.
# Fine bands have twice the pixels of coarse ones over the same swath.
BANDS = [
    ("B01", 1296, 0.12), ("B02", 2592, 0.25), ("B03", 2592, 0.25), ("B04", 2592, 0.5),
    ("B05", 1296, 0.5), ("B06", 1296, 0.5), ("B07", 1296, 0.5), ("B08", 2592, 0.375),
    ("B09", 1296, 0.75), ("B10", 1296, 1.0), ("B11", 1296, 1.0), ("B12", 1296, 1.25),
    ("B13", 1296, 1.25),
]
# TDI configurations in the order of the file; sets with more of them go on as STEP_5, STEP_6, ...
CONFIGS = ["ALL", "UPPER", "LOWER", "SINGLE"]
FORMATS = {"short": "{:.6g}", "sci9": "{:.9E}", "full17": "{:.17g}"}
MOST_DETECTORS = 12  # slots of the record
MOST_PIXELS = 32767  # the record's pixel count is a signed 16-bit number


def coefficient_rows(rng, pixels):
    """Yields (element name, values) of one detector's four vectors.

    A1 is the gain relative to the detector's mean: a slow slope towards the edges, odd and even
    pixels apart (they are read out by different amplifiers) and noise. A2 bends the response above
    the breakpoint ZS, D is the dark signal; ZS and D are in digital counts.
    """
    edge, split = rng.uniform(0.005, 0.03), rng.gauss(0, 0.002)
    zs_mean, d_mean = rng.uniform(350, 650), rng.uniform(40, 60)
    slope = [edge * math.cos(math.pi * i / pixels) for i in range(pixels)]
    yield "COEFF_A1", [1 + s + (-1) ** i * split + rng.gauss(0, 0.004) for i, s in enumerate(slope)]
    yield "COEFF_A2", [rng.gauss(0, 2e-6) for _ in range(pixels)]
    yield "COEFF_ZS", [round(rng.gauss(zs_mean, 8)) for _ in range(pixels)]
    yield "COEFF_D", [d_mean + rng.gauss(0, 1.5) for _ in range(pixels)]


def with_defects(detector, name, values):
    """What pictures and checks are to find: an outlier in detector 3, a step in A1 of detector 5, two
    pixels without values in detector 8, and the last third of detector 9."""
    middle, third = len(values) // 2, len(values) // 3
    if detector == 3:
        values[third] += 2 * (max(values) - min(values))
    elif detector == 5 and name == "COEFF_A1":
        values[middle:middle + 3] = [value + 0.05 for value in values[middle:middle + 3]]
    elif detector == 8:
        values[third] = values[2 * third] = math.nan
    elif detector == 9:
        values[-third:] = [math.nan] * third
    return values


def detector_lines(rng, detector, pixels, number_format, has_defects=False):
    yield f'      <COEFFICIENTS detector_id="{detector}">'
    yield f"        <NB_OF_PIXELS>{pixels}</NB_OF_PIXELS>"
    yield "        <ON_BOARD_EQUALIZATION>"
    yield "          <APPLICABILITY_DATE>2015-07-01T00:00:00</APPLICABILITY_DATE>"
    for name, values in coefficient_rows(rng, pixels):
        values = with_defects(detector, name, values) if has_defects else values
        form = FORMATS[rng.choice(list(FORMATS)) if number_format == "mix" else number_format]
        yield f"          <{name}>{' '.join(form.format(value) for value in values)}</{name}>"
    yield "        </ON_BOARD_EQUALIZATION>"
    yield "      </COEFFICIENTS>"


def file_lines(args, band_id):
    name, pixels, epsilon = BANDS[band_id - 1]
    pixels = args.pixels or pixels
    rng = random.Random(f"{args.seed}/{name}")
    yield '<?xml version="1.0" encoding="UTF-8"?>'
    yield f"<!-- made input, seed {args.seed}: no instrument has these coefficients -->"
    yield f"<{args.root}>"
    yield "  <HEADER>"
    yield f"    <FILE_NAME>EQ_{name}.xml</FILE_NAME>"
    yield "    <PRODUCTION_DATE>2015-06-23T10:00:00</PRODUCTION_DATE>"
    yield "  </HEADER>"
    yield "  <SPECIFIC_HEADER>"
    yield "    <APPLICABILITY_DATE>2015-07-01T00:00:00</APPLICABILITY_DATE>"
    yield "    <APPLICABILITY_END_DATE>2030-12-31T23:59:59</APPLICABILITY_END_DATE>"
    yield "  </SPECIFIC_HEADER>"
    yield "  <DATA>"
    yield f"    <BAND_ID>{band_id}</BAND_ID>"
    yield f"    <EPSILON>{epsilon}</EPSILON>"
    yield f"    <NUC_TABLE_ID>{args.nuc_table_id}</NUC_TABLE_ID>"
    for index in range(args.configs):
        label = CONFIGS[index] if index < len(CONFIGS) else f"STEP_{index + 1}"
        yield f'    <COEFFICIENTS_LIST tdi_config="{label}">'
        for detector in range(1, args.detectors + 1):
            yield from detector_lines(rng, detector, pixels, args.format, getattr(args, "defects", False))
        yield "    </COEFFICIENTS_LIST>"
    yield "  </DATA>"
    yield f"</{args.root}>"


def number(lowest, highest):
    """An argument type: a whole number from lowest to highest."""

    def parse(text):
        value = int(text)
        if not lowest <= value <= highest:
            raise argparse.ArgumentTypeError(f"{value} is outside {lowest} to {highest}")
        return value

    return parse


def band_ids(text):
    """An argument type: band names separated by commas, as the list of their BAND_IDs."""
    names = [name for name, _, _ in BANDS]
    unknown = [name for name in text.split(",") if name not in names]
    if unknown:
        raise argparse.ArgumentTypeError(f"no such band: {', '.join(unknown)}")
    return [names.index(name) + 1 for name in text.split(",")]


def parse_arguments():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bands", type=band_ids, default=list(range(1, len(BANDS) + 1)),
                        help="names separated by commas (default: all, B01 to B13)")
    parser.add_argument("--detectors", type=number(0, MOST_DETECTORS), default=MOST_DETECTORS,
                        help="detectors 1 to this one (default: 12)")
    parser.add_argument("--pixels", type=number(1, MOST_PIXELS),
                        help="pixels of each detector (default: 2592 or 1296, the band's own)")
    parser.add_argument("--configs", type=number(0, 1000), default=len(CONFIGS),
                        help="TDI configurations (default: 4)")
    parser.add_argument("--format", choices=[*FORMATS, "mix"], default="short",
                        help="number format: 6 digits, 10 digits with exponent, all 17 digits, or "
                             "another one for each vector (default: short)")
    parser.add_argument("--defects", action="store_true",
                        help="with outliers, a step and missing values")
    parser.add_argument("--root", default="TEST_EQ_TABLE",
                        help="root element (default: TEST_EQ_TABLE)")
    parser.add_argument("--nuc-table-id", type=int, default=7, help="default: 7")
    parser.add_argument("--seed", type=int, default=1, help="default: 1")
    parser.add_argument("--out", type=pathlib.Path, required=True,
                        help="folder for the files EQ_<band>.xml, made when missing")
    return parser.parse_args()


def main():
    args = parse_arguments()
    args.out.mkdir(parents=True, exist_ok=True)
    for band_id in args.bands:
        path = args.out / f"EQ_{BANDS[band_id - 1][0]}.xml"
        with path.open("w", encoding="utf-8", newline="\n") as out:
            out.writelines(line + "\n" for line in file_lines(args, band_id))


if __name__ == "__main__":
    main()
