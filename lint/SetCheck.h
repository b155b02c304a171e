#pragma once

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "lint/Expectation.h"
#include "lint/Teller.h"

namespace lint {

/// What a configuration has: by detector, its pixels.
using DetectorPixels = std::map<long, long>;

/// Looks at what the files of a set have to do with each other, and at what is expected of them.
class SetCheck {
  public:
    /// Neither is owned; both must outlive the object.
    SetCheck(Teller& teller, const std::optional<Expectation>& expectation);

    /// A file of the set begins; `number` counts from 0.
    void beginFile(std::span<const char* const> paths, std::size_t number);
    /// What was read in the file, each with its element.
    void root(std::string_view name, int elem);
    void band(long band, int elem);
    void nucTable(long id, int elem);
    void configuration(std::string_view label, const DetectorPixels& detectors, int elem);
    /// The file ends; `dataElem` stands for it.
    void endFile(int dataElem);
    /// The set ends.
    void endSet();

  private:
    /// By label, the detectors of a file's configurations.
    using Configurations = std::map<std::string, DetectorPixels, std::less<>>;

    void compareDetectors(std::string_view label, const DetectorPixels& detectors, int elem);
    void comparePixels(const DetectorPixels& detectors, int elem);
    void checkExpected(const DetectorPixels& detectors, int elem);
    void compareLabels(int dataElem);

    Teller& teller_;
    const std::optional<Expectation>& expectation_;
    std::multiset<long> expectedBands_;  ///< those that have not come yet
    std::set<std::string, std::less<>> expectedLabels_;
    std::set<std::string, std::less<>> paths_;
    std::set<std::string, std::less<>> names_;
    std::optional<std::string> rootName_;
    std::set<long> bands_;
    long band_ = 0;
    DetectorPixels usual_;   ///< of the first configuration of the set that has any
    std::string usualName_;  ///< which that is
    std::string fileName_;
    std::optional<Configurations> first_;  ///< of the first file
    Configurations current_;
    std::map<std::string, int, std::less<>> elems_;  ///< of the current configurations
    std::optional<long> filePixels_;                 ///< P of the file's first configuration
};

}  // namespace lint
