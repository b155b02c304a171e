# Seeded generator of input cases for the comparison: small realistic parameter files, then the
# same ones rearranged, awkwardly written, encoded in many ways, and damaged.
import copy, os, random

# Each row: rearrangements of elements, awkwardness (0 none, 1 valid XML, 2 malformed as well),
# damaged places, whether another encoding is taken.  A case takes one row for all its files.
PROFILES = ((0, 0, 0, 0), (0, 1, 0, 0), (1, 0, 0, 0), (2, 0, 0, 0), (4, 1, 0, 0), (1, 2, 0, 0),
            (0, 0, 1, 0), (0, 0, 3, 0), (0, 1, 2, 0), (0, 0, 0, 1), (0, 1, 0, 1), (0, 0, 1, 1))
NUMBERS = """1.5abc;+2;-0;.5;5.;1e400;-1e400;1e-400;4.9e-324;0x1.8p1;0x;inf;-INFINITY;nan;-nan;
 nan(0x12);NaN(abc;infx;abc;1,5;1e;1e+308;\t7;\n8;1\n2;1\t2;1d5;--1;1_0;&#49;&#x32;;&lt;3;7&;&#32;4
 ;&nbsp;1;123456789012345678901234567890;0.1;\r\n3.25;1e22;9007199254740993;2.5 ; 6""".split(";")
INTEGERS = """0;1;2;3;12;13;-1;-5;7x;+4; 5;\n6;0x10;1e2;;abc;32767;32768;65535;65536;65541;40000;-32768
 ;-32769;-65533;4294967297;-4294967295;9223372036854775807;99999999999999999999;255;256;260;3.9;003
 ;&#51;""".replace("\n ", "").split(";")
DATES = """2015-06-23T10:00:00;2015-06-23T10:00:59.6;2015-06-23;2015-06-23T;2015-06-23T10
;2015-06-23T10:00;20150623T100000;20150623T1000;20150623;20150623T1;23-JUN-2015;23-jun-2015 10:00:00.5;23-JUX-2015 1:1
;23-JUN;JUN;23/06/2015 10:00;23/06/2015;15-06-23T;99-01-01T;69-1-1T;70-1-1T;99-12-31T23:59:59.5;garbage
;10:00;10:00:1e30;0000-00-00T00:00:00;2015-13-45T25:61:61;1901-12-13T20:45:51;1600-02-29T0:0:0
;9999-12-31T23:59:59.5;12345-06-07T1:2:3;999999-1-1T;-999999-1-1T;2147483647-1-1T;2015-06-23 10:00:00
;2015-06-23T1:2:nan;2015-06-23T1:2:inf;2015-06-23T1:2:-0.5;2015-06-23T-1:-2;1999-12-31T23:59:59.4;
;2038-01-19T03:14:08; 2015-06-23T1:2:3;2015-06-23T10:00:00Z;29-feb-1900 1:2;2015- 6- 7T1 :2;1-JA-2000
;01-SEPT-2015;5-0-2015T;99999999999-1-1T1:1;1950-01-01T1:2:1e10;1/2/3;1/2;2015-6-5T99999999999:1""".split("\n")
DATES = ";".join(line.strip(";") for line in DATES).split(";") + [""]
LABELS = ("ALL", "", "A", "TDI_1", "x" * 105, "a&amp;b", "&eacute;&Oslash;&#x20AC;", "a>b", "a/b",
          " \t", "&bogus;&&#00000065;&#000000065;&#x0x41;&# 65;&#-1;", "<",
          "é À ß", "Привет", "日本語テスト", "한국어", "中文", "שלום", "ไทย €")
ROOTS = ("TEST_EQ_TABLE",) * 30 + ("ABCD", "ABC", "A", "html", "TÉST_ß", "日本語表", "éa", "a;bcdefg",
                                   "_:.-x", "TEST[EQ]", "Ж{|}~", "TEST=1")
# Encoding name as declared, and the codec that really writes the text.
ENCODINGS = [tuple(row.split(">")) for row in """UTF-8>utf-8;utf8>utf-8;ISO-8859-1>latin-1
latin1>latin-1;ISO-8859-1/>latin-1;iso-8859-15>iso8859-15;windows-1252>cp1252;windows-1251>cp1251
KOI8-R>koi8-r;IBM850>cp850;macintosh>mac-roman;Shift_JIS>shift_jis;sjis>cp932;EUC-JP>euc_jp;gbk>gbk
ISO-2022-JP>iso2022_jp;GB18030>gb18030;GB2312>gb2312;Big5>big5;BIG5-HKSCS>big5hkscs;EUC-KR>euc_kr
ISO-2022-KR>iso2022_kr;TIS-620>tis-620;iso-8859-8>iso8859-8;cp1255>cp1255;cp1258>cp1258;UTF-7>utf-7
johab>johab;UTF-16>utf-8;utf-16le>utf-8;UTF-16BE>utf-8;UCS-2>utf-8;UCS-4>utf-8;unicode>utf-8
UTF-32>utf-8;utf-32>utf-8;UTF-32BE>utf-8;CP1200>utf-8;UTF16>utf-8;IBM037>latin-1;no-such-set>latin-1
X-ANSI>latin-1;>latin-1;//IGNORE>latin-1;UTF-8//IGNORE>latin-1;UTF 8>latin-1;US-ASCII>latin-1
CP65001>utf-8;UTF-16>latin-1;UTF-8>latin-1;UTF-32//X>utf-8;../x>utf-8""".replace("\n", ";").split(";")]
ENCODINGS += [("ISO-8859-1//" + "X" * length, "latin-1") for length in (87, 88)]
# Ill-formed or stateful text that takes the place of the label TDI_1 in an encoded file.
RAW_LABELS = (b"\x1B$BF|\xFFF|\x1B(B", b"\x1B$BF|\x1B(", b"a\xFF\x88\x62\x80e\xCC\xD2", b"x\xE2\x82", b"\xC3(",
              b"+AAA-+ZeU-+Ze", b"\xED\xA0\x80\xF4\x90\x80\x80\xC0\x80\xF8", b"\x0E\x30\x21\xFF\x0F", b"\x88\x62")
# Byte-order mark and codec of files whose declaration doesn't count.
MARKED = ((b"\xEF\xBB\xBF", "utf-8"), (b"\xFF\xFE", "utf-16-le"), (b"\xFE\xFF", "utf-16-be"),
          (b"", "utf-16-le"), (b"", "utf-16-be"), (b"\xFF\xFE\0\0", "utf-32-le"), (b"", "utf-32-be"),
          (b"\xFE\xFF", "utf-16-le"), (b"\xEF\xBB\xBF", "latin-1"), (b"\xFF\xFE\x3D\xD8", "utf-16-le"))
DECLARATIONS = (
    "<?xml version='1.0' encoding=\"{}\"?>", "<?XML ENCODING = '{}' ?>", "<?xml encoding={} ?>",
    "<? xml version=1.0 encoding='{}'?>", " <?xml encoding='{}'?>", "<?xml encoding='{}?>",
    "<?xml encoding='{}'?>".replace(" ", " " * 1003), "<?pi?><?xml encoding='{}'?>",
    "<?xml version='1.0'?><!-- encoding='{}' -->",
    "<!-- {} --><html><head><meta http-equiv=content-type content='x; charset={}'/></head>",
    "<html><meta name='a'><META HTTP-EQUIV='Content-Type' CONTENT='charset = {}'></html>")
DOCTYPES = ("<!DOCTYPE a>", "<!DOCTYPE a SYSTEM 'x>y'>", "<!-- <a> -->", "<?style >x?>", "\r\n \t",
            "<!DOCTYPE a [<!ENTITY b \"]>'\"> <!-- ' ]> --> <?p ]>?> <!ATTLIST a b CDATA '>'>]>")
BAD_HEADS = ("<!DOCTYPE a [<!X ]><b>]>", "<!DOCTYPE a '>", "x<", "</a>", "<a/>", "<!DOCTYPE a [<!-x>]>",
             "<!X>", "<![CDATA[<a>]]>")
GAPS = ("", "", "", "\n  ", "\r\n\t", " ", "<!-- - -> </x> & -->", "<?p x='?>", "<![CDATA[ &#32;> ]]>",
        "<x y='/>'/>")
BAD_GAPS = ("<x>", "</x>", "</>", "</ a>", "<>", "<!>", "<<", "<!-x", "<![x", "t&", "<![C]]>", "<!-->",
            "</a b='>'>", "<1", "<a it's>", "<a b=c/>", "<a b=/>", "<a/ >", "</DATA>", "</COEFFICIENTS>",
            "<!D[<!E '>'>]>")
END_TAGS = ("</{}>",) * 6 + ("</{} >", "</{}\n>", "</{} x='>'>", "</{}/>", "</{}" + " " * 1030 + ">")
FILE_NAMES = (b"a b.xml", b"d/EQ.xml", b"d//e/EQ", "é.xml".encode(), b"\xFF\n", b"x" * 99, b"y" * 123,
              b"-", b"--help", b"./p", b"7")
UNREADABLE = (b"missing.xml", b"d/", b"d", b"", b"EQ_B1.xml/", b".")
MARKUP = b"<>/='\"&!?-[]\0;# <>/"


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
        new = [[name, [[key, rng.choice(INTEGERS + list(LABELS))]], content]]
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
        forms = [f' {key}="{value}"']
        if often:
            forms += [f" {key}='{value}'", f"\n{key} = '{value}' ", f" x='>' y=\"'\" {key}='{value}'"]
        if often and awkward > 1:
            forms += [f" {key}={value}", f" {key}", f" / {key}='{value}'", f" {key}='{value}' ' {key}=1",
                      f" {key}={value}/", f" {key}={value} /", f" {key}={value}\"/", f" {key}= /", f" {key}=/"]
        tag += rng.choice(forms)
    if content == "" and rng.random() < 0.5:
        return tag + rng.choice(("/>", " />"))
    if isinstance(content, str):
        half = rng.randint(0, len(content))
        body = content if not often else rng.choice((
            f"<![CDATA[{content}]]>", f"\n{content}\n", content + " ",
            content[:half] + rng.choice(GAPS) + content[half:], " " + content.replace(" ", "  ", 1),
            "".join(f"&#{ord(c)};" for c in content)))
    else:
        gaps = GAPS + BAD_GAPS * (awkward > 1 and rng.random() < 0.2) if often else ("", "\n")
        body = "".join(render(rng, child, awkward) + rng.choice(gaps) for child in content)
    end = rng.choice(END_TAGS).format(name) if often else f"</{name}>"
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
    mark, name, codec, labels = b"", "UTF-8", "utf-8", LABELS
    if encoded:
        name, codec = rng.choice(ENCODINGS)
        # Labels that this set can write.
        labels = [x for x in LABELS[-7:] if x.encode(codec, "ignore").decode(codec, "ignore") == x] + ["TDI_1"] * 3
        if rng.random() < 0.25:
            mark, codec = rng.choice(MARKED)
    tree = document(rng, root, nuc_id, labels)
    for _ in range(moves):
        if tree[2]:
            rearrange(rng, tree)
    heads = DOCTYPES + BAD_HEADS * (awkward > 1 and rng.random() < 0.3)
    declarations = DECLARATIONS[:3] if rng.random() < 0.7 else DECLARATIONS + ("", "")
    head = rng.choice(declarations).replace("{}", name)
    head += "".join(rng.choices(heads, k=rng.randint(0, 2))) if awkward else ""
    text = head + render(rng, tree, awkward) + rng.choice(("", "\n"))
    data = mark + text.encode(codec, rng.choice(("replace", "ignore")))
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
