#!/usr/bin/env python3
# A slow, plain model of the whole converter, for comparison with the program on generated input.
#
# run(paths) gives what `eqconvert PATH...` must do: the bytes on standard output, the bytes on
# standard error, and the exit status (negative: ended by that signal).  Everything is written to
# be read: an element is an object with a list of children, every procedure is the literal one.
# Only what the platform decides (iconv, strtol, strtod, sscanf) is asked from the C library.
import ctypes, datetime, errno, html.entities, locale, math, re, signal, struct

locale.setlocale(locale.LC_ALL, "C")  # the program never calls setlocale
LIBC = ctypes.CDLL(None, use_errno=True)
LIBC.strtol.restype, LIBC.strtod.restype = ctypes.c_long, ctypes.c_double
LIBC.iconv_open.restype, LIBC.iconv.restype = ctypes.c_void_p, ctypes.c_size_t
LIBC.iconv.argtypes = [ctypes.c_void_p] * 5
LIBC.iconv_close.argtypes = [ctypes.c_void_p]
FAILED = ctypes.c_size_t(-1).value


def strtol(text, base=10):
    return LIBC.strtol(text, None, base)


def strtod(text):
    return LIBC.strtod(text, None)


# ---- Character sets ------------------------------------------------------------------------

# Names that mean wide units in memory (so does every name that begins with "UTF-32").  A file
# whose declaration could be read as bytes can't hold such units: it is converted from UTF-8.
WIDE_NAMES = {b"cp1200", b"ucs-2", b"ucs-2le", b"unicode", b"utf-16", b"utf-16le", b"utf16",
              b"utf16le"}


# Opens iconv from the named set to UTF-8; None when there is no such converter.
def open_converter(name):
    if len(name) >= 100:
        return None
    name = b"UTF-16BE" if name.upper() == b"UTF-16" else name.upper()
    handle = LIBC.iconv_open(b"UTF-8", name)
    return None if handle == FAILED else handle


# Converts the data, with one "?" for each byte that had to be skipped, and closes the handle.
def convert(handle, data):
    source = ctypes.create_string_buffer(data, len(data) + 1)
    target = ctypes.create_string_buffer(16 * len(data) + 256)  # no set expands as much
    in_at, in_left = ctypes.c_void_p(ctypes.addressof(source)), ctypes.c_size_t(len(data))
    out_at, out_left = ctypes.c_void_p(ctypes.addressof(target)), ctypes.c_size_t(len(target))
    output = ctypes.byref(out_at), ctypes.byref(out_left)
    while in_left.value > 0:
        if LIBC.iconv(handle, ctypes.byref(in_at), ctypes.byref(in_left), *output) != FAILED:
            continue
        assert ctypes.get_errno() != errno.E2BIG
        if ctypes.get_errno() != errno.EILSEQ or in_left.value == 0:
            break  # EINVAL: a sequence that the end of the data cuts off is dropped
        LIBC.iconv(handle, None, None, *output)  # back to the initial shift state, then the "?"
        ctypes.memmove(out_at.value, b"?", 1)
        out_at.value, out_left.value = out_at.value + 1, out_left.value - 1
        in_at.value, in_left.value = in_at.value + 1, in_left.value - 1
    LIBC.iconv(handle, None, None, *output)  # a set with a memory may still hold a character
    LIBC.iconv_close(handle)
    return target.raw[:len(target) - out_left.value]


# UTF-8 form of any value up to 21 bits, surrogates and values above U+10FFFF included.
def utf8(code):
    if code < 0x80:
        return bytes([code])
    tail, lead, mask = ((1, 0xC0, 0x1F) if code < 0x800 else
                        (2, 0xE0, 0x0F) if code < 0x10000 else (3, 0xF0, 0x07))
    return bytes([lead | (code >> 6 * tail) & mask] +
                 [0x80 | (code >> 6 * i) & 0x3F for i in reversed(range(tail))])


# The range of the second half of a pair is deliberately not checked.
def utf16_to_utf8(units):
    result, at = b"", 0
    while at < len(units):
        code, at = units[at], at + 1
        if 0xD800 <= code <= 0xDFFF and at == len(units):
            code = ord("?")
        elif 0xD800 <= code <= 0xDFFF:
            code, at = ((code & 0x3FF) << 10 | units[at] & 0x3FF) + 0x10000, at + 1
        result += utf8(code)
    return result


# ---- Tokenizer -----------------------------------------------------------------------------

WHITE = b"\t\n\r "
TAG_NAME = re.compile(rb"[^\t\n\r />]*")  # the name that pairs start and end tags
READ_NAME = re.compile(rb"[^\t\n\r !\"'/;<=>?\\]*")  # the name as it is told to callers
# Tokens of a tag: the first, those after "=", and all others.  A quote opens only as the first
# byte of a token, and runs to its like or to the end of the text.
FIRST = re.compile(rb"(?P<first>[^\t\n\r /=>?]*)")
VALUE = re.compile(rb"\"(?P<double>[^\"]*)\"?|'(?P<single>[^']*)'?|(?P<bare>[^\t\n\r >]*)")
OTHER = re.compile(rb"\"(?P<double>[^\"]*)\"?|'(?P<single>[^']*)'?|(?P<mark>[/=>?])|"
                   rb"(?P<name>[^\t\n\r /=>?]+)")


def skip_white(text, at):
    return re.compile(rb"[\t\n\r ]*").match(text, at).end()


def read_name(text, at):
    return READ_NAME.match(text, skip_white(text, at)).group()


# The tokens (kind, text, end) of the tag whose name stands at `at`, through its ">" or, when
# that is missing, to the end of the text.
def tag_tokens(text, at):
    form, tokens, last = FIRST, [], None
    while at < len(text) and last != ("mark", b">"):
        token = form.match(text, at)
        last = token.lastgroup, token.group(token.lastindex)
        tokens.append((*last, token.end()))
        form = VALUE if last == ("mark", b"=") else OTHER
        at = skip_white(text, token.end())
    return tokens


# The raw value of the first attribute of that name; empty when there is none.
def find_attribute(text, at, wanted, same=lambda a, b: a == b):
    tokens = [token[:2] for token in tag_tokens(text, at)]
    for (kind, name), equals, value in zip(tokens, tokens[1:], tokens[2:]):
        if kind == "mark" and name != b"=":
            break
        if kind == "name" and same(name, wanted):
            return value[1] if equals == ("mark", b"=") else b""
    return b""


# A start or end tag whose name stands at `at`.  "<a b=c/>" is not empty: the "/" belongs to the
# value, unless white space or a quote stands before it.
def tag_node(text, at, kind):
    tokens = tag_tokens(text, at)
    if not tokens or tokens[-1][:2] != ("mark", b">"):
        return "error", len(text)
    end = tokens[-1][2]
    empty = kind == "start" and text[end - 2:end - 1] == b"/" and (
        tokens[-2][0] != "bare" or text[end - 3] in WHITE + b"\"'")
    return "empty" if empty else kind, end


# A syntax error runs through the next ">", or up to a "<" that comes before it.
def error_node(text, at):
    found = re.compile(rb"[<>]").search(text, at)
    return "error", found.start() + (found.group() == b">") if found else len(text)


# What is passed over at once in a document type declaration, and in its internal subset.
OUTSIDE = re.compile(rb"\"[^\"]*\"|'[^']*'|[^\"']")
SUBSET = re.compile(rb"<!--.*?-->|<\?.*?\?>|<![AEN](?:[^\"'>]|\"[^\"]*\"|'[^']*')*>|(?!<[!?]).", re.S)


# A document type declaration, from the byte behind its "<!D".
def doctype_node(text, at):
    form = OUTSIDE
    while passed := form.match(text, at):
        at = passed.end()
        if form is OUTSIDE and passed.group() == b">":
            return "doctype", at
        form = {b"[": SUBSET, b"]": OUTSIDE}.get(passed.group(), form)
    if form is SUBSET and re.compile(rb"<!(?!--|[AEN])").match(text, at):
        return error_node(text, at + 2)
    return "error", len(text)


# Texts, and nodes that end at a mark of their own, which the text may lack.
MARKED = re.compile(rb"(?P<white>[\t\n\r ]+(?![^<]))|(?P<text>[^<]+)|(?P<pi><\?.*?\?>)|"
                    rb"(?P<comment><!--.*?-->)|(?P<cdata><!\[C.*?\]\]>)|"
                    rb"(?P<error><(?:\?|!--|!\[C).*)", re.S)


# (kind, end) of the node at `start`, inside the text.  Kinds: "text", "white", "start", "empty"
# (a start tag that ends in "/>"), "end", "cdata", "pi", "comment", "doctype", "error".  What the
# end of the text cuts off is an "error".
def node_at(text, start):
    if found := MARKED.match(text, start):
        return found.lastgroup, found.end()
    head = text[start + 1:start + 4]
    if re.match(rb"[A-Z:_\x61-\xFF]", head):
        return tag_node(text, start + 1, "start")
    if head.startswith(b"/"):
        return tag_node(text, start + 2, "end")
    if head.startswith(b"!D"):
        return doctype_node(text, start + 3)
    good = next(part for part in (b"!-", b"![", b"!", b"") if head.startswith(part))
    return error_node(text, start + 1 + len(good))


# All nodes of a text, as (kind, start, end).
def nodes(text):
    at = 0
    while at < len(text):
        kind, end = node_at(text, at)
        yield kind, at, end
        at = end


# ---- Loading -------------------------------------------------------------------------------


def same_name(left, right):
    return left.lower() == right.lower()


# The name behind "charset=" in the content attribute of a meta element; empty when absent.
def charset_of(content):
    names = re.findall(rb"[^\t\n\r !\"'/;<=>?\\]+|[^\t\n\r ]", content)
    for charset, equals, name in zip(names, names[1:], names[2:]):
        if same_name(charset, b"charset") and equals == b"=" and READ_NAME.fullmatch(name):
            return name
    return b""


# The encoding that a file's first bytes declare, raw; empty when they declare none.
def declared_encoding(probe):
    in_html = False
    for kind, start, end in nodes(probe):
        tag = TAG_NAME.match(probe, start + (2 if kind == "end" else 1)).group()
        if kind == "pi" and start == 0 and same_name(read_name(probe, 2), b"xml"):
            return find_attribute(probe, 2, b"encoding", same_name)
        if kind == "error" or kind == "end" and same_name(tag, b"head"):
            break
        if kind in ("start", "empty"):
            if not in_html and not same_name(tag, b"html"):
                break
            in_html = True
            equiv, content = (find_attribute(probe, start + 1, name, same_name)
                              for name in (b"http-equiv", b"content"))
            if same_name(tag, b"meta") and same_name(equiv, b"Content-Type"):
                if charset_of(content):
                    return charset_of(content)
    return b""


# The text of a file in UTF-8, without its null characters; empty when it can't be read.
def load(path):
    try:
        with open(path, "rb") as file:
            data = file.read()
    except OSError:
        return b""
    if data[:2] in (b"\xFF\xFE", b"\xFE\xFF"):
        order = "<" if data[0] == 0xFF else ">"
        units = struct.unpack_from(f"{order}{len(data) // 2 - 1}H", data, 2)  # drops an odd byte
        return utf16_to_utf8([unit for unit in units if unit])
    marked = data.startswith(b"\xEF\xBB\xBF")
    encoding = b"UTF-8" if marked else declared_encoding(data[:1024]) or b"UTF-8"
    encoding = encoding.split(b"\0")[0]
    data = data[3 if marked else 0:].replace(b"\0", b"")
    handle = open_converter(encoding)
    if handle is None:
        return data  # of an unknown set: kept as it is
    if encoding.lower() in WIDE_NAMES or encoding.startswith(b"UTF-32"):
        LIBC.iconv_close(handle)
        handle = open_converter(b"UTF-8")
    return convert(handle, data)


# ---- Elements ------------------------------------------------------------------------------


# One element; the document itself is the element without a parent.
class Element:
    def __init__(self, parent, start=0, start_length=0):
        self.parent, self.start, self.start_length = parent, start, start_length
        self.length, self.end_length, self.children = start_length, 0, []


# An element that is never closed keeps its start tag only; its children follow it as siblings.
# Until then it is the last child of its parent.
def close_unended(element):
    for child in element.children:
        child.parent = element.parent
    element.parent.children += element.children
    element.children = []


# "</a>" also ends "<a=1>" and "<a[x]>".
def ends_tag(open_name, name):
    rest = open_name[len(name):len(name) + 1]
    return open_name.startswith(name) and rest in (b"", b" ", b"/", b"=", b"[", b"]")


def parse(text):
    document = Element(None)
    stack = [(document, b"")]  # open elements with their names
    for kind, start, end in nodes(text):
        if kind in ("start", "empty"):
            element = Element(stack[-1][0], start, end - start)
            element.parent.children.append(element)
            if kind == "start":
                stack.append((element, TAG_NAME.match(text, start + 1).group()))
        elif kind == "end":
            name = TAG_NAME.match(text, start + 2).group()
            matches = [i for i in range(1, len(stack)) if ends_tag(stack[i][1], name)]
            while matches and len(stack) - 1 > matches[-1]:
                close_unended(stack.pop()[0])
            if matches:  # else a lone end tag, which changes nothing
                element = stack.pop()[0]
                element.length = end - element.start
                element.end_length = (end - start) & 0x3FF  # ten bits hold it, a known limit
    while len(stack) > 1:
        close_unended(stack.pop()[0])
    return document


# Of a name that HTML spells in two cases the form with a capital letter counts: it sorts first.
ENTITIES = {"apos": 39}
for spelling in sorted(html.entities.name2codepoint):
    ENTITIES.setdefault(spelling.lower(), html.entities.name2codepoint[spelling])


# What a reference to this (folded) name stands for; None when it is no reference.
def referred(name):
    if name.startswith(b"#"):
        code = strtol(name[2:], 16) if name.startswith(b"#x") else strtol(name[1:])
    else:
        code = ENTITIES.get(name.decode(), 0)
    return utf8(code) if code > 0 else None


def unescape(text):
    result, at = b"", 0
    while at < len(text):
        found = re.compile(rb"&([^;\x80-\xFF]{0,9});").match(text, at)
        piece = referred(found.group(1).lower()) if found else None
        result += text[at:at + 1] if piece is None else piece
        at = at + 1 if piece is None else found.end()
    return result


# A loaded file and the position in it: parent, main (the current element) and child.  main and
# child are None for "none"; at the top level the parent is the document itself.  A saved position
# names only the innermost of the three, but the others follow from it.
class Document:
    def __init__(self, path):
        self.text = load(path)
        self.top = parse(self.text)
        self.position = self.top, None, None

    # Moves to the next sibling of that name (None: of any); stays when there is none.
    def find(self, name=None):
        parent, main, _ = self.position
        row = parent.children
        for candidate in row[row.index(main) + 1 if main else 0:]:
            if name is None or self.name(candidate) == name:
                self.position = parent, candidate, None
                return True
        return False

    # Takes up again the child that out() left behind, if nothing was found in between.
    def into(self):
        _, main, child = self.position
        if main:
            self.position = main, child, None

    def out(self):
        parent, main, _ = self.position
        if parent is not self.top:
            self.position = parent.parent, parent, main

    def name(self, element):
        return read_name(self.text, element.start + 1) if element else b""

    def attribute(self, name):
        return unescape(find_attribute(self.text, self.position[1].start + 1, name))

    # The text of the current element; only an element without children has one.
    def data(self):
        element = self.position[1]
        if not element or element.start_length == element.length or element.children:
            return b""
        begin = element.start + element.start_length
        content = self.text[begin:element.start + element.length - element.end_length]
        if b"<" not in content:
            return unescape(content)
        forms = {"text": unescape, "cdata": lambda node: node[9:-3]}  # all else is dropped
        return b"".join(forms.get(kind, lambda node: b"")(content[start:end])
                        for kind, start, end in nodes(content))

    # The text of an element that isn't there is empty, wherever the search stopped.
    def find_data(self, name):
        return self.data() if self.find(name) else b""


# ---- Dates ---------------------------------------------------------------------------------

EPOCH = datetime.date(2000, 1, 1)
CYCLE = 146097  # days in 400 years
DAY = 86400
MONTHS = "jan feb mar apr may jun jul aug sep oct nov dec".split()


# Month 0 is January; any field may lie outside its usual range.
def seconds_since_2000(year, month, day, hour, minute, second):
    year, month = divmod(year * 12 + month, 12)
    cycles, year = divmod(year - 2000, 400)
    days = cycles * CYCLE + (datetime.date(2000 + year, month + 1, 1) - EPOCH).days + day - 1
    return days * DAY + hour * 3600 + minute * 60 + second


# (accepted, microseconds since 2000) of a text; `old` stays when the text isn't understood.
def parse_date(text, old):
    text = text.split(b"\0")[0]
    year, month, day, hour, minute = (ctypes.c_int(0) for _ in range(5))
    name, seconds = ctypes.create_string_buffer(4), ctypes.c_double(0)
    layouts = ((b"%d-%3s-%d %n", day, name, year), (b"%d-%d-%dT%n", year, month, day),
               (b"%4d%2d%2dT%n", year, month, day), (b"%d/%d/%d %n", day, month, year))
    for layout, (form, *fields) in enumerate(layouts, 1):
        # What a failed attempt has read is deliberately left for the next ones.
        consumed = ctypes.c_int(0)
        LIBC.sscanf(text, form, *map(ctypes.byref, fields), ctypes.byref(consumed))
        used = consumed.value
        if used == 0 and name.value and day.value and year.value:
            used = len(text)
        if used > 0:
            break
    date = [year.value, month.value - 1, day.value]
    if used == 0:
        layout, date = 0, [2000, 0, 1]
    elif date[0] < 100:
        date[0] += 2000 if date[0] < 70 else 1900
    if layout == 1:
        spelled = name.value.decode("latin-1").lower()
        if spelled not in MONTHS:
            return False, old
        date[1] = MONTHS.index(spelled)
    if used < len(text):
        form = b"%2d%2d%lf" if layout == 3 else b"%d:%d:%lf"
        if LIBC.sscanf(text[used:], form, *map(ctypes.byref, (hour, minute, seconds))) < 2:
            return False, old
    whole = math.floor(seconds.value) if math.isfinite(seconds.value) else math.inf
    if -2**31 <= whole < 2**31:
        total = seconds_since_2000(*date, hour.value, minute.value, whole)
        value = int(total * 1000000 + (seconds.value - whole) * 1e6)
        if -2**63 <= value < 2**63:
            return True, value
    limit = b"13-DEC-1901 20:45:52" if date[0] < 1971 else b"19-JAN-2038 03:14:07"
    return False, parse_date(limit, old)[1]


# Rounded to the second, half away from zero.
def date_text(microseconds):
    seconds = (abs(microseconds) + 500000) // 1000000 * (1 if microseconds >= 0 else -1)
    cycles, days = divmod(seconds // DAY, CYCLE)
    date = EPOCH + datetime.timedelta(days)
    year = date.year + 400 * cycles
    return b"%s%04d-%02d-%02dT%02d:%02d:%02d" % (
        b"-" if year < 0 else b"", abs(year), date.month, date.day, seconds // 3600 % 24,
        seconds // 60 % 60, seconds % 60)


# ---- The converter -------------------------------------------------------------------------

KINDS = (b"COEFF_A1", b"COEFF_A2", b"COEFF_ZS", b"COEFF_D")
QUIET_NAN = struct.pack("<Q", 0x7FF8000000000000)


# Collects the output of one run; SystemExit ends it before its time.
class Converter:
    def __init__(self, paths):
        self.out, self.err, self.paths = [], [], paths
        self.file_type, self.nuc_id = b"", -1

    def write(self, *pieces):
        self.out += pieces

    def say(self, *pieces):
        self.err += [p if isinstance(p, bytes) else str(p).encode() for p in pieces]

    def fail(self, *pieces):
        self.say(*pieces, "\n")
        raise SystemExit(255)

    def write_header(self, document, path):
        document.find()
        name = document.name(document.position[1])
        document.into()
        if self.file_type:
            if name != self.file_type:
                self.say("file type table mismatch (", name, ") in file ", path, "\n")
            return
        if len(name) < 4:  # an uncaught exception of the standard library ends the program
            self.say("terminate called after throwing an instance of 'std::out_of_range'\n  what():"
                     "  basic_string::substr: __pos (which is 4) > this->size() (which is ",
                     len(name), ")\n")
            raise SystemExit(-signal.SIGABRT)
        self.file_type = name
        self.write(b"ZEDA%2d" % (len(name) + 1), b"VORN/", name[4:])
        document.find(b"HEADER")
        document.into()
        date = self.write_date(document, b"PRODUCTION_DATE", "creation time", 0)
        document.out()
        document.find(b"SPECIFIC_HEADER")
        document.into()
        date = self.write_date(document, b"APPLICABILITY_DATE", "application start time", date)
        self.write_date(document, b"APPLICABILITY_END_DATE", "application stop time", date)
        document.out()
        self.write(b"%2d" % len(self.paths))

    # One date value serves all three dates: a bad text leaves the one before.
    def write_date(self, document, element, what, date):
        text = document.find_data(element)
        good, date = parse_date(text, date)
        if not good:
            self.say(what, " is invalid: ", text)  # deliberately without a line end
        self.write(date_text(date))
        return date

    # Each search and each move is made even when the one before it failed.
    def convert_file(self, path):
        self.path = path
        document = Document(path)
        self.write_header(document, path)
        document.find(b"DATA")
        document.into()
        band = strtol(document.find_data(b"BAND_ID")) & 0xFF
        epsilon = strtod(document.find_data(b"EPSILON"))
        nuc_id = ctypes.c_int16(strtol(document.find_data(b"NUC_TABLE_ID"))).value
        if self.nuc_id < 0:  # also after an id with bit 15 set: written again, not compared
            self.nuc_id = nuc_id
            self.write(struct.pack("<h", nuc_id))
        elif nuc_id != self.nuc_id:
            self.fail("NUC table mismatch (", nuc_id, ") in file ", path)
        base_name = path.split(b"/")[-1]
        self.write(bytes([band]), b"%02d" % len(base_name), base_name)
        saved, count = document.position, 0
        while document.find(b"COEFFICIENTS_LIST"):
            count += 1
        document.position = saved
        self.say("num_tdi_configs=", count & 0xFF, "\n")
        self.write(bytes([count & 0xFF]))
        while document.find(b"COEFFICIENTS_LIST"):
            self.convert_configuration(document, band, epsilon)

    def convert_configuration(self, document, band, epsilon):
        label = document.attribute(b"tdi_config")
        document.into()
        self.write(b"%02d" % len(label), label, struct.pack("<d", epsilon))
        table = {(kind, slot): [] for kind in KINDS for slot in range(1, 13)}
        most = 0
        while document.find(b"COEFFICIENTS"):
            most = max(most, self.read_detector(document, band, table))
        self.write(struct.pack("<h", most))
        for values in table.values():  # by kind, then by slot
            packed = [struct.pack("<d", value) for value in values]
            self.write(*(packed + [QUIET_NAN] * (most - len(packed)))[:most])
        document.out()

    # Fills the table from one COEFFICIENTS element; gives its number of pixels.
    def read_detector(self, document, band, table):
        detector = ctypes.c_int32(strtol(document.attribute(b"detector_id"))).value
        document.into()
        pixels = strtol(document.find_data(b"NB_OF_PIXELS"))
        if pixels > 32767:
            self.fail("NB_OF_PIXELS ", pixels, " of detector ", detector, " is above 32767 in file ", self.path)
        pixels = ctypes.c_int16(pixels).value
        document.find(b"ON_BOARD_EQUALIZATION")
        document.into()
        document.find(b"APPLICABILITY_DATE")
        while document.find() and (kind := document.name(document.position[1])) in KINDS:
            if not 1 <= detector <= 12:
                self.fail("detector ", detector, " is outside 1 to 12 in file ", self.path)
            pieces = document.data().split(b" ")
            if pieces[-1] == b"":  # one trailing space, or no text at all, adds nothing
                pieces.pop()
            values = table[kind, detector]
            values += map(strtod, pieces)
            if len(values) != pixels:
                self.fail("Found ", len(values), " ", kind, " pixels instead of ", pixels,
                          " for detector ", detector)
            self.say(band, "-", detector, ":", pixels, " ", kind, " values\n")
        document.out()
        document.out()
        return pixels


# (standard output, standard error, exit status) of the program for these paths, all in bytes.
def run(paths):
    converter, status = Converter(paths), 0
    try:
        for path in paths:
            converter.convert_file(path)
    except SystemExit as end:
        status = end.code
    return b"".join(converter.out), b"".join(converter.err), status
