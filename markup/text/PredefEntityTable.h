#pragma once

#include <span>
#include <string_view>

/// A character entity.
struct PredefEntity {
    std::string_view name;  ///< as HTML spells it
    int codePoint;
};

namespace markup {

/// All entities; of two names that differ in case only, the one with a capital letter stands first.
std::span<const PredefEntity> allPredefEntities();

/// Finds the code point of an XML or HTML 4 character entity by its name, case-blind; 0 when there
/// is none. Where HTML has two names that differ in case only, the one with a capital letter is
/// always meant: "oslash" and "Oslash" are both U+00D8. That is required.
int findPredefEntity(std::string_view name);

}  // namespace markup
