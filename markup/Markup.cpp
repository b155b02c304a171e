// The document's text, and what is made of it. Whatever can run out of memory comes in an order
// that leaves a document that can be used: the new text is there before the old one goes, and no
// record of the old text is left when the new one is parsed.

#include "markup/Markup.h"

#include <climits>
#include <utility>

#include "markup/ElemParser.h"
#include "markup/ResultLog.h"
#include "markup/ResultMessages.h"

MarkupDocument::MarkupDocument() {
    // So that there is always room to tell that memory ran out.
    resultText_.reserve(outOfMemoryResult.size());
    x_InitMarkup();
    SetDoc(nullptr);
}

void MarkupDocument::x_InitMarkup() {
    docFlags_ = 0;
    fileError_ = 0;
    forgetRecords();
    tree_.Clear();
}

bool MarkupDocument::SetDoc(const char* text) {
    if (text == nullptr && !inFileMode()) {
        tree_.Clear();
    }
    return setText(text == nullptr ? std::string_view() : std::string_view(text));
}

bool MarkupDocument::SetDoc(const std::string& text) {
    return setText(text);
}

bool MarkupDocument::setText(std::string_view text) {
    if (inFileMode()) {
        return false;
    }
    // Not in the place of the old text: the new one may lie in it.
    TextBuffer fresh;
    if (text.size() <= INT_MAX) {
        fresh.assign(text);
    }
    docText_ = std::move(fresh);
    resultText_.clear();
    fileError_ = 0;
    return x_ParseDoc();
}

bool MarkupDocument::x_ParseDoc() {
    forgetRecords();
    // Before it is known how many elements there will be. Record 0 may have its place only now.
    constexpr std::size_t bytesForRecord = 64;
    tree_.reserve(static_cast<int>(docText_.size() / bytesForRecord + 8));
    tree_.restart();
    if (!docText_.empty()) {
        ElemParser parser(tree_, resultText_, hasFlag(DocFlagIgnoreCase));
        parser.parseDocument(tokenAt(0));
    }
    return IsWellFormed();
}

/// Leaves no records but the document's own, without needing memory: what any earlier text left
/// must not be followed, whatever fails next.
void MarkupDocument::forgetRecords() noexcept {
    pos_ = {};
    attribWalk_ = {};
    forgetFindings();
    savedPos_.RemoveAll();
    tree_.restart();
}

/// Forgets what was found out about the records, when they or the case rule change.
void MarkupDocument::forgetFindings() noexcept {
    siblingNumbers_.clear();
    vainSearches_.clear();
}

int MarkupDocument::x_ParseElem(int parent, TokenPos& token) {
    forgetFindings();
    ElemParser parser(tree_, resultText_, hasFlag(DocFlagIgnoreCase));
    return isRecord(parent) ? parser.parse(parent, token) : 0;
}

int MarkupDocument::x_ReleasePos(int pos) {
    forgetFindings();
    const bool isReleasable = isElement(pos) && !tree_[pos].hasFlag(ElemFlagDeleted);
    return isReleasable ? tree_.release(pos) : 0;
}

bool MarkupDocument::IsWellFormed() const {
    if (hasFlag(DocFlagWriteFile)) {
        return true;
    }
    // While a document is read node by node, its one root may still be to come.
    const bool hasRecords = recordCount() != 0;
    if (hasRecords && tree_[0].hasFlag(ElemFlagIllFormed)) {
        return false;
    }
    return hasFlag(DocFlagReadFile) ||
           (hasRecords && tree_[0].child != 0 && tree_[tree_[0].child].next == 0);
}

std::string MarkupDocument::GetError() const {
    return markup::renderResults(resultText_);
}
