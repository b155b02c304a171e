#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "markup/DocFlags.h"
#include "markup/ElemPosTree.h"
#include "markup/NodeTypes.h"
#include "markup/PathPos.h"
#include "markup/SavedPosMap.h"
#include "markup/TokenPos.h"
#include "markup/text/EncodingNameTable.h"
#include "markup/text/TextArg.h"
#include "markup/text/TextBuffer.h"
#include "markup/text/TextEncoding.h"
#include "markup/text/UnicodeCodec.h"

/// An XML document: its text as one UTF-8 string and, for each element, one record of where it lies
/// in the text. A document is read by moving a current position over the records and cutting names,
/// attribute values and data out of the text.
///
/// The parser never fails: malformed input is tolerated and described in the result log, which
/// `GetError` renders. No operation throws for bad input; failure is a false result or an empty
/// string with the position unchanged.
///
/// Record index 0 is the document itself and means "none" in positions and links. Texts, files and
/// results of conversions above INT32_MAX bytes are refused.
///
/// While its flags hold DocFlagReadFile or DocFlagWriteFile a document is in a file mode. It takes
/// no text, file or saved position then, and finds no child elements; nothing changes.
///
/// Operations begin with a capital letter; those that begin with `x_` work on given records or
/// maintain them, and are meant for the layer itself and for callers that keep record indices.
class MarkupDocument {
  public:
    /// The current position. All zero before the first element of the document level.
    struct Position {
        int parent = 0;      ///< element whose children are being visited, 0 = document level
        int main = 0;        ///< current element among them, 0 = before the first
        int child = 0;       ///< current child of the main element, 0 = none
        int nodeType = 0;    ///< type of the current node, `NodeElement` on an element, 0 on none
        int nodeOffset = 0;  ///< where the current node lies when it is not an element
        int nodeLength = 0;  ///< its length; 0 on an element

        bool operator==(const Position&) const = default;
    };

    /// Makes an empty document.
    MarkupDocument();
    MarkupDocument(const MarkupDocument&) = delete;
    MarkupDocument& operator=(const MarkupDocument&) = delete;

    // ---- Text

    /// Replaces the text by a copy of `text`, a null pointer giving an empty document, and parses
    /// it. The text may be the document's own, or a part of it. Returns what `IsWellFormed`
    /// returns; false, with nothing changed, while the document is in a file mode, and false with
    /// an empty document for a text above INT32_MAX bytes.
    bool SetDoc(const char* text);
    bool SetDoc(const std::string& text);
    /// The whole text, with a NUL behind it; valid until the document gets another.
    std::string_view GetDoc() const { return docText_.view(); }

    /// True when the last parse met nothing ill-formed and exactly one top-level element.
    bool IsWellFormed() const;
    /// What happened in the last parse, load or save, as one line for people; "" for nothing.
    std::string GetError() const;
    /// The result log that `GetError` renders: a run of empty elements, one per event.
    const std::string& GetResult() const { return resultText_; }
    /// Why the last load or save failed: the errno of the first file call that failed, ENOMEM when
    /// memory ran out; 0 when none did, and once the document has got another text. A load may
    /// succeed although closing the file failed.
    int GetFileError() const { return fileError_; }

    /// The flags (`DocFlag`); setting them replaces them all and takes effect in later operations.
    int GetDocFlags() const { return docFlags_; }
    void SetDocFlags(int flags) {
        docFlags_ = flags;
        forgetFindings();
    }

    // ---- Files

    /// Reads, converts to UTF-8 and parses a file. True when the file was read and the text is
    /// well-formed; false otherwise, with a "file_error" in the result log when it was not read:
    /// the document has no elements then.
    bool Load(TextArg path);
    /// Reads a file as `Load` does, without parsing. `results` receives the result log. `flags` are
    /// document flags, in and out. `encoding` may name the encoding of a byte file, overriding the
    /// one it declares; else it receives the file's. The last three may be null.
    static bool ReadTextFile(TextArg path, std::string& text, std::string* results = nullptr,
                             int* flags = nullptr, std::string* encoding = nullptr);
    /// Writes the text to a file: under the byte-order mark that the flags remember, else in the
    /// encoding that the text declares, else in UTF-8; appended to it under DocFlagAppendFile. What
    /// an encoding can't hold becomes "?", and a text whose encoding has no converter stays UTF-8.
    /// False, with a "file_error" in the result log, unless everything was written. Neither the
    /// text nor the flags change.
    bool Save(TextArg path);
    /// Writes a text as `Save` does; the other arguments are as for `ReadTextFile`.
    static bool WriteTextFile(TextArg path, const std::string& text, std::string* results = nullptr,
                              int* flags = nullptr, std::string* encoding = nullptr);
    /// The encoding that an XML declaration at the very start of `text`, or the meta element of an
    /// HTML head, names; "" when there is none.
    static std::string GetDeclaredEncoding(TextArg text);

    // ---- Navigation

    /// Moves to the next sibling element called `name`, which is the first name of an element path
    /// (see `PathPos`); null or "" means any. Paths that begin with "/" find nothing, and
    /// predicates have no effect: both are required.
    bool FindElem(TextArg name = nullptr) { return FindElem(PathPos::parsed(name)); }
    /// The same for a path that has been parsed.
    bool FindElem(const PathPos& path);
    /// Moves the child position to the next child of the main element called `name`. When there is
    /// no main element the first one at this level becomes it, also when no child is found.
    bool FindChildElem(TextArg name = nullptr);
    /// Moves to the next node, of any type in the bit set `typeMask` (0 = any), and returns its
    /// type: a `NodeType`, or 0 when there is none up to the end of the parent element.
    int FindNode(int typeMask = 0);
    /// Goes into the main element: its current child, or the place before its first, becomes the
    /// position.
    bool IntoElem();
    /// Goes back to the parent element; the element left becomes the current child.
    bool OutOfElem();

    /// Saves the position (child, else main, else parent) under `name` in map number `map`, in
    /// place of an earlier one of that name. False for a null name, a negative number and in file
    /// modes. All are lost at the next parse.
    bool SavePos(TextArg name = "", int map = 0);
    /// Moves to the position saved under `name`; false when there is none, and as for `SavePos`.
    bool RestorePos(TextArg name = "", int map = 0);
    /// Creates position map `map` with `size` slots. False when it exists, when `size` is below 1
    /// or `map` negative, and in file modes.
    bool SetMapSize(int size, int map = 0);

    /// The current position, for callers that keep record indices.
    const Position& position() const { return pos_; }

    // ---- Names, attributes and data at the current position

    /// The element's name; on other nodes "#text", "#cdata-section", "#comment", the target of a
    /// processing instruction, or the name in a lone end tag or document type.
    std::string GetTagName() const;
    /// The data of the current node: of a leaf element its unescaped text and CDATA sections.
    std::string GetData() const { return x_GetData(pos_.main); }
    /// The unescaped value of the main element's first attribute of that name, or of the
    /// pseudo-attribute of the current processing instruction; "" when it is missing.
    std::string GetAttrib(TextArg name) const { return x_GetAttrib(pos_.main, name); }
    /// Name and unescaped value of the main element's attribute number `n`, counted from 0. Asking
    /// for one after another takes time linear in the tag.
    bool GetNthAttrib(int n, std::string& name, std::string& value) const;
    /// The name alone; "" when there are no more than `n` attributes.
    std::string GetAttribName(int n) const;

    // ---- Characters and encodings (see UnicodeCodec.h and TextEncoding.h)

    static constexpr auto GetEncodingCodePage = ::x_GetEncodingCodePage;
    static constexpr auto EncodeCharUTF8 = ::EncodeCharUTF8;
    static constexpr auto EncodeCharUTF16 = ::EncodeCharUTF16;
    static constexpr auto DecodeCharUTF8 = ::DecodeCharUTF8;
    static constexpr auto DecodeCharUTF16 = ::DecodeCharUTF16;
    static constexpr auto UTF16To8 = ::UTF16To8;
    static constexpr auto UTF8To16 = ::UTF8To16;
    static constexpr auto AToUTF8 = ::AToUTF8;
    static std::string UTF8ToA(TextArg text, int* failedCharacters = nullptr) {
        return ::UTF8ToA(text, failedCharacters);
    }
    static bool DetectUTF8(const char* text, int length, int* nonAscii = nullptr,
                           bool* errorAtEnd = nullptr) {
        return ::DetectUTF8(text, length, nonAscii, errorAtEnd);
    }

    // ---- Workers

    /// Resets to a document without flags, records and saved positions; the text and the result log
    /// stay until `SetDoc`.
    void x_InitMarkup();
    /// Parses the whole text into records and returns what `IsWellFormed` returns. Clears the
    /// position and all saved positions; the result log is added to, not emptied.
    bool x_ParseDoc();
    /// Parses nodes from the token's next offset to the end of the text, making the elements
    /// children of record `parent`. Returns the first record made, 0 if none.
    /// Requires: the token runs over this document's text.
    int x_ParseElem(int parent, TokenPos& token);

    /// The next element after sibling `from`, or from the first child of `parent` when that is 0,
    /// that the path names; 0 when there is none.
    int x_FindElem(int parent, int from, const PathPos& path) const;
    /// Name, data and attribute of record `pos`; "" when there is no such record.
    std::string x_GetTagName(int pos) const { return std::string(tagNameView(pos)); }
    std::string x_GetData(int pos) const;
    std::string x_GetAttrib(int pos, TextArg name) const;
    /// The absolute path of record `pos`, such as "/r/a[2]/b": each name is followed by the
    /// element's number among the siblings of that name where it has any, by the case rule of the
    /// document; "" when there is no such record. The first call for an element numbers all its
    /// siblings, so that any number of calls together take time linear in the records and the paths
    /// (but for a logarithm of the names); the numbers, 4 bytes for each record, are kept until the
    /// records change.
    std::string x_GetPath(int pos) const;
    /// The name without a copy; valid until the document gets another text.
    std::string_view tagNameView(int pos) const;
    /// The data of record `pos` without a copy where it stands in the text as it is; else it is put
    /// into `storage`. Valid while both stay unchanged.
    std::string_view dataView(int pos, std::string& storage) const;
    /// Drops saved positions whose record was released.
    void x_CheckSavedPos();

    /// Hands out a record, all zero, growing the tree when it is used up.
    int x_GetFreePos() { return tree_.take(); }
    /// Puts a record on the list of deleted ones and returns its former next link; 0 when there is
    /// no such element, or it is on the list.
    int x_ReleasePos(int pos);
    /// Makes room for `n` records; 0 means half as many again as are in use. Always true.
    bool x_AllocElemPos(int n = 0) {
        tree_.reserve(n);
        return true;
    }

    /// Number of records in use, the document's own included; 0 before the first parse.
    int recordCount() const { return tree_.count(); }
    /// Record `pos`. Requires: 0 <= pos < recordCount().
    const ElemPos& record(int pos) const { return tree_[pos]; }
    /// True length of the start tag of record `pos`, also where the record keeps only low bits; 0
    /// when there is no such element.
    int startTagLength(int pos) const;

    /// Checks every rule that holds between records, position and text, in time linear in the
    /// document. Returns "" or the first rule found broken; for tests and fuzzers.
    std::string checkInvariants() const;

  private:
    bool hasFlag(int flag) const { return (docFlags_ & flag) != 0; }
    bool inFileMode() const { return hasFlag(DocFlagReadFile | DocFlagWriteFile); }
    bool isRecord(int pos) const { return pos >= 0 && pos < recordCount(); }
    bool isElement(int pos) const { return pos > 0 && pos < recordCount(); }

    bool setText(std::string_view text);
    void forgetRecords() noexcept;
    void forgetFindings() noexcept;

    void setPos(int parent, int main, int child);
    bool isOnOtherNode() const { return pos_.nodeLength != 0; }
    int nodeSearchStart() const;
    int nextNode(TokenPos& token, NodePos& node) const;
    std::string_view slice(int offset, int length) const;
    /// The text behind the "<" of record `pos`. One fresh from x_GetFreePos lies nowhere in the
    /// text and seems to lie at its start.
    std::string_view behindTagMark(int pos) const {
        const std::string_view text = docText_.view();
        return text.substr(std::min(static_cast<std::size_t>(tree_[pos].start) + 1, text.size()));
    }
    std::string_view tagNameAt(int pos) const;
    int findNamed(int pos, std::string_view name) const;
    bool isCalled(int pos, std::string_view name) const;
    std::string_view unescaped(std::string_view text, std::string& storage) const;
    std::string_view contentOf(std::string_view content, std::string& storage) const;
    TokenPos tokenAt(int offset) const { return TokenPos(docText_.view(), docFlags_, offset); }
    std::string nodeName(int n) const;
    int siblingNumber(int pos) const;
    void numberChildren(int parent) const;
    std::string checkRecord(int pos) const;
    std::string checkPosition() const;

    TextBuffer docText_;
    std::string resultText_;
    int fileError_ = 0;
    Position pos_;
    int docFlags_ = 0;
    SavedPosMapArray savedPos_;
    /// The attribute last read by number, from which the next is found.
    struct AttribWalk {
        int elem = 0;       ///< whose attribute it is, 0 for none
        int number = 0;     ///< its number
        int priorName = 0;  ///< `TokenPos::priorName`
    };
    mutable AttribWalk attribWalk_;
    /// By record, its number among the siblings of its name, `onlyOfName`, or 0 for not numbered
    /// yet; records behind the end are not numbered yet either.
    mutable std::vector<int> siblingNumbers_;
    /// Long searches by name that have found nothing: by parent and name, where the first sibling
    /// starts that was looked at. From there on the name will not be found.
    mutable std::map<std::pair<int, std::string>, int> vainSearches_;
    ElemPosTree tree_;
};
