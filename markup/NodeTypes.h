#pragma once

/// What a node of the document is; bit values, so that sets of them can be given to `FindNode`.
/// An end tag has no bit: the tokenizer returns it as `NodeEndTag`.
enum NodeType : int {
    NodeElement = 1,                 ///< "<" followed by a name-start byte
    NodeText = 2,                    ///< a run up to the next "<" that is not all white space
    NodeWhitespace = 4,              ///< a run of white space up to the next "<"
    NodeCDataSection = 8,            ///< "<![C" ... "]]>"
    NodeProcessingInstruction = 16,  ///< "<?" ... "?>"
    NodeComment = 32,                ///< "<!--" ... "-->"
    NodeDocumentType = 64,           ///< "<!D" ... the matching ">"
    NodeLoneEndTag = 128,            ///< an end tag that closes nothing (found by `FindNode` only)
    NodeError = 0x8000,              ///< a syntax error node (found by `FindNode` only)
};

/// What the tokenizer returns besides the bits above.
enum TokenizerResult : int {
    NodeEndTag = 0,
    NodeSyntaxError = -1,
    NodeEndOfText = -2,
};

/// Node flag: a start tag that ends in "/>".
inline constexpr int NodeFlagEmpty = 0x10000;
