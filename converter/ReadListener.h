#pragma once

#include "markup/Markup.h"

/// What the converter looks for in a file, in the order in which it does.
enum class Sought {
    FileType,  ///< the root element
    Header,    ///< this and the next four in the first file only
    ProductionDate,
    SpecificHeader,
    ApplicabilityStart,
    ApplicabilityEnd,
    Data,
    BandId,
    Epsilon,
    NucTableId,
    Configuration,  ///< from here on again and again, as often as there are such elements
    Detector,
    PixelCount,
    Equalization,
    VectorDate,
    Vector,  ///< any element where a vector may stand
};

/// Is told what the converter looks for and finds, as it goes. Whoever wants to know how files are
/// read listens to the converter itself: nothing else reads them in the same way.
class ReadListener {
  public:
    ReadListener() = default;
    ReadListener(const ReadListener&) = delete;
    ReadListener& operator=(const ReadListener&) = delete;
    virtual ~ReadListener() = default;

    /// The converter has looked for something, and nothing of what it found has been read yet.
    /// `elem` is its record in the document, 0 when there is none; then the document's current
    /// element is the one that was current before. The document must not be changed, nor its
    /// position; it lives until the next `FileType`.
    virtual void sought(Sought what, const MarkupDocument& document, int elem) = 0;
};
