#pragma once

#include <string_view>

#include "markup/text/TextArg.h"

// Results of a parse, which it adds as it meets them.
inline constexpr std::string_view ResultRootHasSibling = "root_has_sibling";
inline constexpr std::string_view ResultNoRootElement = "no_root_element";
inline constexpr std::string_view ResultLoneEndTag = "lone_end_tag";
inline constexpr std::string_view ResultUnendedStartTag = "unended_start_tag";
inline constexpr std::string_view ResultFirstTagSyntax = "first_tag_syntax";
inline constexpr std::string_view ResultExclamationTagSyntax = "exclamation_tag_syntax";
inline constexpr std::string_view ResultDoctypeTagSyntax = "doctype_tag_syntax";
inline constexpr std::string_view ResultCommentTagSyntax = "comment_tag_syntax";
inline constexpr std::string_view ResultCDataSectionSyntax = "cdata_section_syntax";
inline constexpr std::string_view ResultUnterminatedTagSyntax = "unterminated_tag_syntax";

// Results of reading and writing a file.
inline constexpr std::string_view ResultFileError = "file_error";
inline constexpr std::string_view ResultBom = "bom";
inline constexpr std::string_view ResultRead = "read";
inline constexpr std::string_view ResultWrite = "write";
inline constexpr std::string_view ResultConvertedTo = "converted_to";
inline constexpr std::string_view ResultConvertedFrom = "converted_from";
inline constexpr std::string_view ResultNullsRemoved = "nulls_removed";
inline constexpr std::string_view ResultConversionLoss = "conversion_loss";
inline constexpr std::string_view ResultUtf8Detection = "utf8_detection";
inline constexpr std::string_view ResultEndianSwap = "endian_swap";
inline constexpr std::string_view ResultTruncationError = "truncation_error";

/// Says which attributes a result record carries; bits are combined. The number goes into
/// "offset" and the value text into "tagname" when no bit chooses another attribute.
enum ResultCode : int {
    RESULT_COUNT = 1,     ///< the number is a "count"
    RESULT_TYPE = 2,      ///< the value text is a "type"
    RESULT_NUMBER = 4,    ///< the number is "n"
    RESULT_ENCODING = 8,  ///< the value text is an "encoding"
    RESULT_LENGTH = 16,   ///< the number is a "length"
    RESULT_MODIFY = 32,   ///< amends the first record of this name instead of adding one
    RESULT_MSG = 64,      ///< the value text is a "msg"
};

/// What one record of a result log says, before it is written. The texts are not owned.
struct Result {
    std::string_view name;    ///< one of the names above
    TextArg value = nullptr;  ///< null gives no text attribute
    int code = 0;             ///< `ResultCode` bits
    int number = -1;   ///< -1 gives no "offset"; "n", "count" and "length" are written even so
    int number2 = -1;  ///< "offset2", unless it is -1
};
