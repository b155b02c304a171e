# Makes records field by field, with values that are hard to keep.
import struct

DATES = "2015-06-23T10:00:00", "2015-07-01T00:00:00", "2030-12-31T23:59:59"
BITS = [0x7FF8000000000000, 0xFFF8000000000000, 0x7FF8000000000123, 0xFFFFFFFFFFFFFFFF, 0x8000000000000000, 0,
        0x7FF0000000000000, 0xFFF0000000000000, 1, 0x800FFFFFFFFFFFFF, 0x7FEFFFFFFFFFFFFF, 0x3FB999999999999A]
NASTY = b"tab\t nl\n cr\r \"'&amp;&#65;<>]]> \1\x1f\x7f\xc2\x85 \xff\xc3( \xed\xa0\x80 \xf4\x90\x80\x80 \xef\xbf\xbf"


def counted(text, fill=b"0"):
    return str(len(text)).encode().rjust(2, fill) + text


# A configuration with the values of BITS from `start` on, again and again; a NaN that signals as the last if asked.
def configuration(label=b"ALL", pixels=3, epsilon=BITS[-1], start=0, last=None, order="<"):
    bits = [BITS[(start + i) % len(BITS)] for i in range(48 * pixels)]
    bits[-1:] = [last] if last else bits[-1:]
    return counted(label) + struct.pack(f"{order}Qh{len(bits)}Q", epsilon, pixels, *bits)


def file(*configurations, name=b"EQ_B4.xml", band=4, nuc=None, count=None, order="<"):
    return (b"" if nuc is None else struct.pack(order + "h", nuc)) + bytes([band]) + counted(name) + bytes(
        [len(configurations) % 256 if count is None else count]) + b"".join(configurations)


def record(*files, kind=b"_EQ_TABLE", dates=DATES):
    return (b"ZEDA" + counted(b"VORN/" + kind, b" ") + "".join(dates).encode() + str(len(files)).rjust(2).encode() +
            b"".join(files))
