# Reads parameter files by the letter, as somebody would who knows only their form and docs/record.md.
#
# read(paths) gives the record, or raises Refused where a file is not plain: what could be read in
# two ways isn't read at all. With `lenient` it also takes what loses nothing: other layouts of a date,
# white space around a number, hexadecimal ones, a default namespace, elements behind the vectors.
# Shares nothing with the converter or its model but the C library's strtod, for the lenient numbers.
import ctypes, datetime, os, re, struct
import xml.etree.ElementTree as ElementTree
from xml.parsers import expat

KINDS = ("COEFF_A1", "COEFF_A2", "COEFF_ZS", "COEFF_D")
NUMBER = r"[-+]?([0-9]+(\.[0-9]*)?|\.[0-9]+)([eE][-+]?[0-9]+)?"
NAN = struct.pack("<Q", 0x7FF8000000000000)
STRTOD = ctypes.CDLL(None).strtod
STRTOD.restype = ctypes.c_double
MONTHS = "JAN FEB MAR APR MAY JUN JUL AUG SEP OCT NOV DEC".split()
TIME = r"(?P<H>\d\d?):(?P<M>\d\d?)(:(?P<S>\d\d?)(?P<f>\.\d*)?)?Z?"
DATES = (r"(?P<y>\d{4})-(?P<m>\d\d)-(?P<d>\d\d)T(?P<H>\d\d):(?P<M>\d\d):(?P<S>\d\d)",  # the plain one
         rf"(?P<y>\d{{4}})-(?P<m>\d\d?)-(?P<d>\d\d?)T{TIME}",
         r"(?P<y>\d{4})(?P<m>\d\d)(?P<d>\d\d)T(?P<H>\d\d)(?P<M>\d\d)((?P<S>\d\d)(?P<f>\.\d*)?)?Z?",
         rf"(?P<d>\d\d?)-(?P<name>[A-Za-z]{{3}})-(?P<y>\d{{4}}) +{TIME}",
         rf"(?P<d>\d\d?)/(?P<m>\d\d?)/(?P<y>\d{{4}}) +{TIME}")


# The files are not plain, for this reason.
class Refused(Exception):
    pass


def need(holds, reason):
    if not holds:
        raise Refused(reason)


# The first child of each name; they stand in this order.
def seek(parent, *names):
    found = [parent.find(name) for name in names]
    need(found == [child for child in parent if child in found], f"not once each in this order: {names}")
    return found


def text_of(element):
    need(len(element) == 0, f"elements in {element.tag}")
    return element.text or ""


# A text behind its length.
def with_length(text, fill=b"0"):
    return (b"%d" % len(text)).rjust(2, fill) + text


class Reader:
    def __init__(self, lenient):
        self.lenient, self.root, self.nuc_id, self.bands = lenient, None, None, set()

    # The root element. Leniently, names are as written: a default namespace doesn't matter.
    def parse(self, path):
        try:
            with open(path, "rb") as file:
                text = file.read()
            root, names = ElementTree.fromstring(text), []
            parser = expat.ParserCreate()
            parser.StartElementHandler = lambda name, _: names.append(name)
            parser.Parse(text, True)
        except (OSError, ValueError, LookupError, ElementTree.ParseError) as error:
            raise Refused(f"no file of well-formed XML: {error}")
        for element, name in zip(root.iter(), names if self.lenient else ()):
            element.tag = name
        need(not root.tag.startswith("{"), "a namespace")
        return root

    def integer(self, text, least, most):
        form = r"\s*[-+]?[0-9]+\s*" if self.lenient else "[0-9]+"
        need(re.fullmatch(form, text, re.ASCII) and least <= int(text) <= most, f"not in {least} to {most}: {text!r}")
        return int(text)

    def number(self, text):
        if re.fullmatch(NUMBER, text):
            return float(text)
        source, rest = ctypes.create_string_buffer(text.encode()), ctypes.c_char_p()
        value = STRTOD(source, ctypes.byref(rest))
        need(self.lenient and text and not re.search(r"\s", text) and not rest.value, f"no number: {text!r}")
        return value

    def date(self, element):
        text, layouts = text_of(element), DATES if self.lenient else DATES[:1]
        text = text.strip(" \t\r\n") if self.lenient else text
        found = next(filter(None, (re.fullmatch(layout, text, re.ASCII) for layout in layouts)), None)
        need(found, f"no plain date: {text!r}")
        part = dict.fromkeys("HMSf", 0) | {key: value for key, value in found.groupdict().items() if value}
        try:
            month = MONTHS.index(part["name"].upper()) + 1 if "name" in part else part["m"]
            instant = datetime.datetime(*map(int, (part["y"], month, part["d"], part["H"], part["M"], part["S"])))
            instant += datetime.timedelta(seconds=float(f"0{part['f']}") >= 0.5)
        except (ValueError, OverflowError) as error:
            raise Refused(f"no date: {text!r}, {error}")
        need(not self.lenient or instant.year >= 100, "a year of two digits")
        return instant.isoformat().encode()

    # The parts of the record that a file gives.
    def file(self, path, count):
        root = self.parse(path)
        if self.root is None:
            self.root = root.tag
            need(len(root.tag.encode()) >= 4, "a short root name")
            header, specific, _ = seek(root, "HEADER", "SPECIFIC_HEADER", "DATA")
            yield b"ZEDA" + with_length(b"VORN/" + root.tag.encode()[4:], b" ")
            yield from map(self.date, seek(header, "PRODUCTION_DATE"))
            yield from map(self.date, seek(specific, "APPLICABILITY_DATE", "APPLICABILITY_END_DATE"))
            yield b"%2d" % count
        need(root.tag == self.root, "root elements differ")
        data, = seek(root, "DATA")
        lists = data.findall("COEFFICIENTS_LIST")
        fields = seek(data, "BAND_ID", "EPSILON", "NUC_TABLE_ID", *(item.tag for item in lists[:1]))[:3]
        band, epsilon, nuc_id = map(text_of, fields)
        band, nuc_id = self.integer(band, 0, 255), self.integer(nuc_id, 0, 32767)
        epsilon = struct.pack("<d", self.number(epsilon.strip(" \t\r\n") if self.lenient else epsilon))
        yield struct.pack("<h", nuc_id) if self.nuc_id is None else b""
        need(self.nuc_id in (None, nuc_id) and band not in self.bands, "NUC tables differ, or a band twice")
        self.nuc_id = nuc_id
        self.bands.add(band)
        yield bytes([band]) + with_length(os.fsencode(path).split(b"/")[-1])
        labels = [item.get("tdi_config", "").encode() for item in lists]
        need(all(labels) and len(set(labels)) == len(labels) <= 255, f"no label for each: {labels}")
        yield bytes([len(lists)])
        for label, item in zip(labels, lists):
            yield with_length(label) + epsilon + self.configuration(item)

    def configuration(self, configuration):
        table = {}
        for detector in configuration.findall("COEFFICIENTS"):
            number = self.integer(detector.get("detector_id", ""), 1, 12)
            need(number not in table, f"detector {number} twice")
            pixels, equalization = seek(detector, "NB_OF_PIXELS", "ON_BOARD_EQUALIZATION")
            table[number] = self.vectors(equalization, self.integer(text_of(pixels), 0, 32767))
        most = max((len(row[KINDS[0]]) for row in table.values()), default=0)
        rows = [table[number][kind] if number in table else [] for kind in KINDS for number in range(1, 13)]
        return struct.pack("<h", most) + b"".join(
            struct.pack(f"<{len(row)}d", *row) + NAN * (most - len(row)) for row in rows)

    def vectors(self, equalization, pixels):
        tags = [child.tag for child in equalization]
        need(self.lenient or "APPLICABILITY_DATE" in tags, "no date before the vectors")
        begin = tags.index("APPLICABILITY_DATE") + 1 if "APPLICABILITY_DATE" in tags else 0
        end = begin + len(KINDS)
        need(sorted(tags[begin:end]) == sorted(KINDS), "not each kind once, behind the date")
        need(not {*tags[:begin], *tags[end:]} & set(KINDS), "further vectors")
        need(self.lenient or len(tags) == end, "elements behind the vectors")
        return {child.tag: self.values(text_of(child), pixels) for child in equalization[begin:end]}

    def values(self, text, pixels):
        pieces = text.split(" ") if text else []
        if self.lenient and len(pieces) > 1 and pieces[-1] == "":
            pieces.pop()
        need(len(pieces) == pixels, f"{len(pieces)} values, not {pixels}")
        return list(map(self.number, pieces))


def read(paths, lenient=False):
    need(len(set(paths)) == len(paths), "a file twice")
    reader = Reader(lenient)
    return b"".join(part for path in paths for part in reader.file(path, len(paths)))
