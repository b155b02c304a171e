# Seeded generator of input cases for the comparison: small realistic parameter files, then the
# same ones rearranged, awkwardly written, encoded in many ways, and damaged.
import copy, os, pathlib, random, re

# Each row: rearrangements of elements, awkwardness (0 none, 1 valid XML, 2 malformed as well),
# damaged places, whether another encoding is taken.  A case takes one row for all its files.
PROFILES = ((0, 0, 0, 0), (0, 1, 0, 0), (1, 0, 0, 0), (2, 0, 0, 0), (4, 1, 0, 0), (1, 2, 0, 0),
            (0, 0, 1, 0), (0, 0, 3, 0), (0, 1, 2, 0), (0, 0, 0, 1), (0, 1, 0, 1), (0, 0, 1, 1))


# What files are made of: lists of texts, by name.
def read_pieces(path):
    pieces = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("== "):
            row = pieces[line[3:]] = []
        elif not line.startswith("#"):
            plain = line.encode("latin-1", "backslashreplace").decode("unicode_escape")
            row.append(re.sub(r"\{(\d+)\}", lambda match: " " * int(match[1]), plain))
    return pieces


PIECES = read_pieces(pathlib.Path(__file__).with_name("pieces.txt"))
NUMBERS, INTEGERS, DATES, LABELS, DECLARATIONS, GAPS = (
    PIECES[name] for name in ("NUMBERS", "INTEGERS", "DATES", "LABELS", "DECLARATIONS", "GAPS"))
ROOTS = ["TEST_EQ_TABLE"] * 30 + PIECES["ROOTS"]
RAW_LABELS, FILE_NAMES, UNREADABLE, (MARKUP,) = (
    [piece.encode("latin-1") for piece in PIECES[name]]
    for name in ("RAW_LABELS", "FILE_NAMES", "UNREADABLE", "MARKUP"))


# An element is [name, [[attribute, value], ...], text or list of elements].
def vectors(rng, pixels):
    def value():
        return rng.choice(NUMBERS) if rng.random() < 0.05 else f"{rng.uniform(-9, 9):.{rng.randrange(9)}g}"
    return [["COEFF_" + kind, [], " ".join(value() for _ in range(pixels))]
            for kind in rng.sample(("A1", "A2", "ZS", "D"), rng.choice((4, 4, 4, 4, 3)))]


def detector(rng, number):
    pixels, odd = rng.randint(1, 6), rng.random()
    return ["COEFFICIENTS", [["detector_id", rng.choice(INTEGERS) if odd < 0.02 else str(number)]],
            [["NB_OF_PIXELS", [], rng.choice(INTEGERS) if odd > 0.97 else str(pixels)],
             ["ON_BOARD_EQUALIZATION", [], [["APPLICABILITY_DATE", [], "2015"]] + vectors(rng, pixels)]]]


def document(rng, root, nuc_id, labels):
    def leaf(name, text):
        return [name, [], text]

    dates = [rng.choice(DATES) if rng.random() < 0.3 else f"20{i}5-0{i}-11T10:11:12" for i in (1, 2, 3)]
    lists = [["COEFFICIENTS_LIST", [["tdi_config", rng.choice(labels)]],
              [detector(rng, i + 1) for i in rng.sample(range(12), rng.choice((1, 1, 1, 2, 2, 3, 12)))]]
             for _ in range(rng.choice((0, 1, 1, 1, 2, 3)))]
    if rng.random() < 0.005:
        lists += [["COEFFICIENTS_LIST", [], ""] for _ in range(rng.randint(250, 300))]
    return [root, [], [
        ["HEADER", [], [leaf("APPLICABILITY_DATE", "1/1/1999"), leaf("PRODUCTION_DATE", dates[0])]],
        ["SPECIFIC_HEADER", [], [leaf("APPLICABILITY_DATE", dates[1]), leaf("APPLICABILITY_END_DATE", dates[2])]],
        ["DATA", [], [leaf("BAND_ID", str(rng.randrange(13))), leaf("EPSILON", rng.choice(("0.5", "1e-3"))),
                      leaf("NUC_TABLE_ID", nuc_id)] + lists]]]


# Every place of the tree as (list of elements, index).
def places(element):
    if isinstance(element[2], list):
        for index, child in enumerate(element[2]):
            yield element[2], index
            yield from places(child)


def rearrange(rng, root):
    row, at = rng.choice(list(places(root))[:rng.choice((10, None))])
    from_row, from_at = rng.choice(list(places(root)))
    name, attributes, content = element = row[at]
    other = copy.deepcopy(from_row[from_at])
    values = INTEGERS + NUMBERS + DATES
    if attributes and rng.random() < 0.5:
        key = rng.choice((attributes[0][0], "id"))
        new = [[name, [[key, rng.choice(INTEGERS + LABELS)]], content]]
    elif isinstance(content, str) and rng.random() < 0.6:
        new = [[name, attributes, " ".join(rng.choices(values, k=rng.choice((1, 1, 1, 2, 3))))]]
    else:
        new = rng.choice(([], [element, copy.deepcopy(element)], [other], [other, element], row[:1],
                          [[other[0], attributes, content]], [[name.lower(), [], content]],
                          [[name, attributes, ""]], [["X", [], [element]]], [["X", [], "1"], element],
                          [[name, attributes * 2, content]], content))
    row[at:at + 1] = new if isinstance(new, list) else []


# Writes an element; awkwardness 1 uses all that XML allows, 2 also what it doesn't.
def render(rng, element, awkward):
    name, attributes, content = element
    often = awkward and rng.random() < 0.3
    tag = "<" + name
    for key, value in attributes:
        forms = PIECES["ATTRIBUTES"] + PIECES["BAD_ATTRIBUTES"] * (awkward > 1)
        tag += rng.choice(forms if often else forms[:1]).format(key=key, value=value)
    if content == "" and rng.random() < 0.5:
        return tag + rng.choice(("/>", " />"))
    if isinstance(content, str):
        half = rng.randint(0, len(content))
        body = content if not often else rng.choice((
            f"<![CDATA[{content}]]>", f"\n{content}\n", content + " ",
            content[:half] + rng.choice(GAPS) + content[half:], " " + content.replace(" ", "  ", 1),
            "".join(f"&#{ord(c)};" for c in content)))
    else:
        gaps = GAPS + PIECES["BAD_GAPS"] * (awkward > 1 and rng.random() < 0.2) if often else ["", "\n"]
        body = "".join(render(rng, child, awkward) + rng.choice(gaps) for child in content)
    end = rng.choice(PIECES["END_TAGS"]).format(name) if often else f"</{name}>"
    return tag + rng.choice(("", "", "\t")) + ">" + body + ("" if awkward > 1 and rng.random() < 0.03 else end)


def damage(rng, data):
    at, to = sorted(rng.randint(0, len(data)) for _ in range(2))
    to = min(to, at + rng.choice((1, 1, 1, 2, 9, 40)))
    byte = bytes([rng.choice(MARKUP) if rng.random() < 0.7 else rng.randrange(256)])
    twice = 2 * to - at
    return rng.choice((data[:at], data[:at] + byte + data[at + 1:], data[:at] + byte + data[at:],
                       data[:at] + data[to:], data[:at] + byte * 3 + data[to:], data[:to] + data[at:],
                       data[:at] + data[to:twice] + data[at:to] + data[twice:]))


def file_bytes(rng, profile, root, nuc_id):
    moves, awkward, damages, encoded = profile
    mark, name, codec, labels = "", "UTF-8", "utf-8", LABELS
    if encoded:
        name, codec = rng.choice(PIECES["ENCODINGS"]).split(">")
        # Labels that this set can write.
        labels = [x for x in LABELS[-7:] if x.encode(codec, "ignore").decode(codec, "ignore") == x] + ["TDI_1"] * 3
        if rng.random() < 0.25:
            mark, codec = rng.choice(PIECES["MARKED"]).split(">")
    tree = document(rng, root, nuc_id, labels)
    for _ in range(moves):
        if tree[2]:
            rearrange(rng, tree)
    heads = PIECES["DOCTYPES"] + PIECES["BAD_HEADS"] * (awkward > 1 and rng.random() < 0.3)
    declarations = DECLARATIONS[:3] if rng.random() < 0.7 else DECLARATIONS + ["", ""]
    head = rng.choice(declarations).replace("{}", name)
    head += "".join(rng.choices(heads, k=rng.randint(0, 2))) if awkward else ""
    text = head + render(rng, tree, awkward) + rng.choice(("", "\n"))
    data = mark.encode("latin-1") + text.encode(codec, rng.choice(("replace", "ignore")))
    data = data.replace(b"TDI_1", rng.choice(RAW_LABELS)) if encoded else data
    for _ in range(damages):
        data = damage(rng, data)
    return data


# (files, arguments) of one case: files maps a path to its bytes; all paths are relative.
def make_case(seed, index):
    rng = random.Random(f"{seed}:{index}")
    profile, root = rng.choice(PROFILES), rng.choice(ROOTS)
    nuc_id = rng.choice(("5", "5", "7", "0", "40000", "65541"))
    files, arguments = {b"d/x": b""}, []
    for number in range(rng.choice((1, 1, 1, 1, 1, 2, 2, 3)) if index else 0):
        path = rng.choice(FILE_NAMES) if rng.random() < 0.1 else b"EQ_B%d.xml" % (number + 1)
        other_root = rng.choice(ROOTS) if rng.random() < 0.1 else root
        other_id = rng.choice(INTEGERS + ["5", "65541"] * 9) if rng.random() < 0.3 else nuc_id
        files[path] = b"" if rng.random() < 0.01 else file_bytes(rng, profile, other_root, other_id)
        arguments.append(rng.choice(UNREADABLE) if rng.random() < 0.03 else path)
    if arguments and rng.random() < 0.01:  # counts of one, two and three digits
        arguments = rng.choices(arguments, k=rng.choice((9, 10, 40, 99, 100, 123)))
    return files, arguments


# Writes the files of a case below a folder.
def write_case(files, folder):
    for path, data in files.items():
        full = os.path.join(os.fsencode(folder), path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, "wb") as file:
            file.write(data)
