#pragma once

#include <netcdf.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace eqrecord {

/// A netCDF file that is being made: first dimensions, variables and attributes, then values. All
/// throw std::runtime_error, with a message that names the file, when the library or the disk
/// refuses something.
class NetcdfFile {
  public:
    enum class Kind {
        netcdf4,  ///< classic model in HDF5, compressed
        data64,   ///< classic format with lengths and counts of 64 bits
    };
    /// For attributes of the file itself.
    static constexpr int global = NC_GLOBAL;

    /// Begins to write to an open file, which is not owned, in place of what it holds. `name` is
    /// that which messages use.
    NetcdfFile(std::string name, int descriptor, Kind kind);
    NetcdfFile(const NetcdfFile&) = delete;
    NetcdfFile& operator=(const NetcdfFile&) = delete;
    /// Gives up what was not closed.
    ~NetcdfFile();

    /// Returns the dimension. One of length 0 is an unlimited one without any place: there is no
    /// other.
    int addDimension(const char* name, std::size_t length);
    /// Returns the variable.
    int addVariable(const char* name, nc_type type, std::span<const int> dimensions);
    /// Lets a variable of reals be stored compressed, where the kind can, in pieces of this shape.
    void compress(int variable, std::span<const std::size_t> shape);
    void addText(int variable, const char* name, std::string_view text);
    void addInteger(int variable, const char* name, int value);
    void addReal(int variable, const char* name, double value);

    /// Ends the definitions. Values that are never written have no meaning.
    void beginValues();
    /// Writes all values of the part of a variable from `start` on, whose shape is `count`.
    void write(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
               const double* values);
    void write(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
               const int* values);
    void write(int variable, std::span<const std::size_t> start, std::span<const std::size_t> count,
               const char* values);
    /// Writes what is left.
    void close();

  private:
    void check(int status) const;

    std::string name_;
    Kind kind_;
    int file_ = -1;  ///< -1 when it is closed
};

}  // namespace eqrecord
