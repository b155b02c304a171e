# The record that eqconvert writes, for tools that read descriptions of binary formats. Numbers in
# comments are those of the fields in docs/record.md.
meta:
  id: eqrecord
  title: Record of equalisation coefficients
  file-extension: record
  license: MIT
  ks-version: '0.10'
  encoding: UTF-8
  endian: le
doc: |
  Reads the plain case: number texts of two characters, as many configurations as counted, and the
  little-endian order of x86-64. A record with texts of 100 bytes and more, with 100 files and more,
  or with other numbers of configurations than counted needs a reader that searches (`eqrecord`), and
  so does one of a machine with another byte order. Where this description fits, it reads the same as
  `eqrecord dump --format json`; bytes behind the end are an error.
seq:
  - id: marker # 1
    contents: ZEDA
  - id: len_file_type # 2
    type: str
    size: 2
    encoding: ASCII
  - id: file_type # 3
    type: str
    size: 'len_file_type.substring(0, 1) == " " ? len_file_type.substring(1, 2).to_i : len_file_type.to_i'
  - id: creation_date # 4
    type: str
    size: 19
    encoding: ASCII
  - id: applicability_start # 5
    type: str
    size: 19
    encoding: ASCII
  - id: applicability_end # 6
    type: str
    size: 19
    encoding: ASCII
  - id: files_counted_text # 7
    type: str
    size: 2
    encoding: ASCII
  - id: files
    type: 'file(_index == 0 ? true : (files.last.has_id ? files.last.nuc_table_id < 0 : false))'
    repeat: expr
    repeat-expr: files_counted
  - id: rest
    size-eos: true
    valid:
      expr: rest.length == 0
instances:
  files_counted:
    value: 'files_counted_text.substring(0, 1) == " " ? files_counted_text.substring(1, 2).to_i : files_counted_text.to_i'
types:
  file:
    params:
      - id: has_id
        type: bool
        doc: In the first file, and behind each identifier that is negative.
    seq:
      - id: nuc_table_id # 8
        type: s2
        if: has_id
      - id: band # 9
        type: u1
      - id: len_name # 10
        type: str
        size: 2
        encoding: ASCII
      - id: name # 11
        type: str
        size: len_name.to_i
      - id: configurations_counted # 12
        type: u1
      - id: configurations
        type: configuration
        repeat: expr
        repeat-expr: configurations_counted
  configuration:
    seq:
      - id: len_label # 13
        type: str
        size: 2
        encoding: ASCII
      - id: label # 14
        type: str
        size: len_label.to_i
      - id: epsilon # 15
        type: f8
      - id: pixels # 16
        type: s2
        valid:
          min: 0
      - id: kinds # 17
        type: kind
        repeat: expr
        repeat-expr: 4
        doc: COEFF_A1, COEFF_A2, COEFF_ZS, COEFF_D
  kind:
    seq:
      - id: detectors
        type: vector
        repeat: expr
        repeat-expr: 12
        doc: Detectors 1 to 12.
  vector:
    seq:
      - id: values
        type: f8
        repeat: expr
        repeat-expr: _parent._parent.as<configuration>.pixels
        doc: The quiet NaN 0x7ff8000000000000 fills up.
