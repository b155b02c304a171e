"""Records from what they hold, described as eqrecord does it; the values of a configuration are their bits."""
import struct

DATES = {"creation_date": "2015-06-23T10:00:00", "applicability_start": "2015-07-01T00:00:00",
         "applicability_end": "2030-12-31T23:59:59"}
NAN = 0x7FF8000000000000


def numbered(text, fill):
    return str(len(text) if isinstance(text, bytes) else text).rjust(2, fill).encode()


# The fields as (number, bytes, file, configuration), in either byte order.
def fields_of(record, order="<"):
    file_type = record.get("file_type", "VORN/_EQ_TABLE").encode()
    fields = [(1, b"ZEDA", 0, 0), (2, numbered(file_type, " "), 0, 0), (3, file_type, 0, 0)]
    fields += [(4 + i, record.get(name, date).encode(), 0, 0) for i, (name, date) in enumerate(DATES.items())]
    fields.append((7, numbered(record.get("files_counted", len(record["files"])), " "), 0, 0))
    for f, file in enumerate(record["files"], 1):
        if "nuc_table_id" in file:
            fields.append((8, struct.pack(order + "h", file["nuc_table_id"]), f, 0))
        name = file["name"].encode()
        count = file.get("configurations_counted", len(file["configurations"]) % 256)
        fields += [(9, bytes([file["band"]]), f, 0), (10, numbered(name, "0"), f, 0), (11, name, f, 0), (12, bytes([count]), f, 0)]
        for c, part in enumerate(file["configurations"], 1):
            label = part["label"].encode()
            fields += [(13, numbered(label, "0"), f, c), (14, label, f, c), (15, struct.pack(order + "d", part["epsilon"]), f, c),
                       (16, struct.pack(order + "h", part["pixels"]), f, c),
                       (17, struct.pack(f"{order}{48 * part['pixels']}Q", *part["bits"]), f, c)]
    return fields


def bytes_of(record, order="<"):
    return b"".join(field[1] for field in fields_of(record, order))
