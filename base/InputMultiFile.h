#pragma once

#include "base/InputStream.h"
#include "base/ObjAppendList.h"

namespace vek {

/// All files of a folder that match a pattern, in listing order, as one continuous stream.
///
/// Hidden files are passed over. A file whose name ends in "@" stands for a text: its own base name
/// behind that name's length in two digits.
class InputMultiFile : public InputStream {
  public:
    /// `name` is a folder and a pattern, or one file. (A pattern without a folder means the root
    /// folder: write "./*.raw".)
    InputMultiFile(const char* name, ByteOrder order);

    /// Opens the members, each through the input server with `driver` and `options` (null
    /// or "": its defaults). Returns false when a driver refuses; the stream is of no use then.
    /// Throws StdError 2 when nothing matches, and as the members do.
    bool open(const char* driver, const char* options);

    /// The member that holds `offset`, null without members; as in name(). Owned by the stream.
    InputStream* file(long offset);

    /// Name of the member that holds `offset`; of the current one when it is negative, and on a
    /// pipe for every offset still ahead, which could not be sought back from. The stream's own
    /// name without members.
    const String& name(long offset = -1) override;
    /// A target before the start is the start; offsets from the end are absolute.
    InputStream& seek(long offset, std::ios::seekdir dir = std::ios::beg) override;
    long offset() override;
    /// Does nothing: this class has no lines.
    InputStream& getline(char* buffer, unsigned long size, char delimiter = '\n') override;
    bool eof() override;
    bool fail() override;
    int peek() override;
    /// Sum of the members' sizes; 0 when one of them is a pipe.
    long size() override;
    /// Size of the member that name() would name; 0 without members.
    long size(long offset) override;
    /// Returns the bytes delivered plus `reserved`.
    unsigned long bufread(char* buffer, unsigned long count, unsigned long reserved = 0) override;

  private:
    bool addMember(const char* name, const char* driver, const char* options);
    bool addMatches(const char* driver, const char* options);
    InputStream& current() const { return *members_[current_]; }
    bool isLast(long member) const { return member + 1 == members_.count(); }
    bool endsBefore(long member, long target);
    long memberForward(long target);
    long memberBackward(long target) const;

    ObjAppendListP<InputStream> members_;
    /// Where each member begins, as far as reading and seeking have come; ascending, from 0.
    ObjAppendList<long> starts_;
    long current_ = 0;
    long position_ = 0;
    long totalSize_ = 0;
};

}  // namespace vek
