#pragma once

#include <string>
#include <string_view>

#include "converter/ReadListener.h"
#include "lint/ScalarCheck.h"
#include "lint/SetCheck.h"
#include "lint/SourceText.h"
#include "lint/Teller.h"

namespace lint {

/// Looks at the `DATA` section of files and its fields.
class DataCheck {
  public:
    DataCheck(Teller& teller, SetCheck& set) : teller_(teller), set_(set) {}

    /// The converter has looked for something from `Data` to `NucTableId`.
    void sought(Sought what, const MarkupDocument& document, int elem);

  private:
    bool isThere(std::string_view name, const MarkupDocument& document, int elem);
    Integer readField(std::string_view name, const SourceText& source, int elem);
    void readBand(const SourceText& source, int elem);
    void readNucTable(const SourceText& source, int elem);
    void checkConfigurations(const MarkupDocument& document, int elem);

    Teller& teller_;
    SetCheck& set_;
};

}  // namespace lint
