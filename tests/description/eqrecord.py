# Made of docs/eqrecord.ksy by kaitai-struct-compiler 0.10; the SHA-256 of that: 5b3932720ed8e984524483612c247baf4ff4638044afafbb97640bd59c84af75
# This is a generated file! Please edit source .ksy file and use kaitai-struct-compiler to rebuild

import kaitaistruct
from kaitaistruct import KaitaiStruct, KaitaiStream, BytesIO


if getattr(kaitaistruct, 'API_VERSION', (0, 9)) < (0, 9):
    raise Exception("Incompatible Kaitai Struct Python API: 0.9 or later is required, but you have %s" % (kaitaistruct.__version__))

class Eqrecord(KaitaiStruct):
    """Reads the plain case: number texts of two characters, as many configurations as counted, and the
    little-endian order of x86-64. A record with texts of 100 bytes and more, with 100 files and more,
    or with other numbers of configurations than counted needs a reader that searches (`eqrecord`), and
    so does one of a machine with another byte order. Where this description fits, it reads the same as
    `eqrecord dump --format json`; bytes behind the end are an error.
    """
    def __init__(self, _io, _parent=None, _root=None):
        self._io = _io
        self._parent = _parent
        self._root = _root if _root else self
        self._read()

    def _read(self):
        self.marker = self._io.read_bytes(4)
        if not self.marker == b"\x5A\x45\x44\x41":
            raise kaitaistruct.ValidationNotEqualError(b"\x5A\x45\x44\x41", self.marker, self._io, u"/seq/0")
        self.len_file_type = (self._io.read_bytes(2)).decode(u"ASCII")
        self.file_type = (self._io.read_bytes((int((self.len_file_type)[1:2]) if (self.len_file_type)[0:1] == u" " else int(self.len_file_type)))).decode(u"UTF-8")
        self.creation_date = (self._io.read_bytes(19)).decode(u"ASCII")
        self.applicability_start = (self._io.read_bytes(19)).decode(u"ASCII")
        self.applicability_end = (self._io.read_bytes(19)).decode(u"ASCII")
        self.files_counted_text = (self._io.read_bytes(2)).decode(u"ASCII")
        self.files = []
        for i in range(self.files_counted):
            self.files.append(Eqrecord.File((True if i == 0 else (self.files[-1].nuc_table_id < 0 if self.files[-1].has_id else False)), self._io, self, self._root))

        self.rest = self._io.read_bytes_full()
        _ = self.rest
        if not len(self.rest) == 0:
            raise kaitaistruct.ValidationExprError(self.rest, self._io, u"/seq/8")

    class File(KaitaiStruct):
        def __init__(self, has_id, _io, _parent=None, _root=None):
            self._io = _io
            self._parent = _parent
            self._root = _root if _root else self
            self.has_id = has_id
            self._read()

        def _read(self):
            if self.has_id:
                self.nuc_table_id = self._io.read_s2le()

            self.band = self._io.read_u1()
            self.len_name = (self._io.read_bytes(2)).decode(u"ASCII")
            self.name = (self._io.read_bytes(int(self.len_name))).decode(u"UTF-8")
            self.configurations_counted = self._io.read_u1()
            self.configurations = []
            for i in range(self.configurations_counted):
                self.configurations.append(Eqrecord.Configuration(self._io, self, self._root))



    class Configuration(KaitaiStruct):
        def __init__(self, _io, _parent=None, _root=None):
            self._io = _io
            self._parent = _parent
            self._root = _root if _root else self
            self._read()

        def _read(self):
            self.len_label = (self._io.read_bytes(2)).decode(u"ASCII")
            self.label = (self._io.read_bytes(int(self.len_label))).decode(u"UTF-8")
            self.epsilon = self._io.read_f8le()
            self.pixels = self._io.read_s2le()
            if not self.pixels >= 0:
                raise kaitaistruct.ValidationLessThanError(0, self.pixels, self._io, u"/types/configuration/seq/3")
            self.kinds = []
            for i in range(4):
                self.kinds.append(Eqrecord.Kind(self._io, self, self._root))



    class Kind(KaitaiStruct):
        def __init__(self, _io, _parent=None, _root=None):
            self._io = _io
            self._parent = _parent
            self._root = _root if _root else self
            self._read()

        def _read(self):
            self.detectors = []
            for i in range(12):
                self.detectors.append(Eqrecord.Vector(self._io, self, self._root))



    class Vector(KaitaiStruct):
        def __init__(self, _io, _parent=None, _root=None):
            self._io = _io
            self._parent = _parent
            self._root = _root if _root else self
            self._read()

        def _read(self):
            self.values = []
            for i in range(self._parent._parent.pixels):
                self.values.append(self._io.read_f8le())



    @property
    def files_counted(self):
        if hasattr(self, '_m_files_counted'):
            return self._m_files_counted

        self._m_files_counted = (int((self.files_counted_text)[1:2]) if (self.files_counted_text)[0:1] == u" " else int(self.files_counted_text))
        return getattr(self, '_m_files_counted', None)


