// The library takes a name for a file, and more than that: one with "://" is an address, one with
// "#mode=" tells a format, others are those of another system. So it gets none that somebody has
// thought of, but that of the descriptor.
//
// Of a netCDF-4 file whose writing has failed nothing more may be asked: to close it, or to give it
// up, crashes in the library. So it is left as it is, and all is written before it is closed.

#include "tools/eqrecord/NetcdfFile.h"

#include <functional>
#include <numeric>
#include <stdexcept>
#include <utility>

namespace eqrecord {

namespace {

constexpr int deflateLevel = 4;

}  // namespace

NetcdfFile::NetcdfFile(std::string name, int descriptor, Kind kind)
    : name_(std::move(name)), kind_(kind) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    const int mode = kind == Kind::netcdf4 ? NC_NETCDF4 | NC_CLASSIC_MODEL : NC_64BIT_DATA;
    check(::nc_create(path.c_str(), NC_CLOBBER | mode, &file_));
    check(::nc_set_fill(file_, NC_NOFILL, nullptr));
}

NetcdfFile::~NetcdfFile() {
    if (file_ >= 0 && kind_ != Kind::netcdf4) {
        ::nc_abort(file_);
    }
}

void NetcdfFile::check(int status) const {
    if (status != NC_NOERR) {
        throw std::runtime_error(name_ + ": " + ::nc_strerror(status));
    }
}

int NetcdfFile::addDimension(const char* name, std::size_t length) {
    int dimension = 0;
    check(::nc_def_dim(file_, name, length, &dimension));
    return dimension;
}

int NetcdfFile::addVariable(const char* name, nc_type type, std::span<const int> dimensions) {
    int variable = 0;
    check(::nc_def_var(file_, name, type, static_cast<int>(dimensions.size()), dimensions.data(),
                       &variable));
    return variable;
}

void NetcdfFile::compress(int variable, std::span<const std::size_t> shape) {
    if (kind_ == Kind::netcdf4) {
        check(::nc_def_var_chunking(file_, variable, NC_CHUNKED, shape.data()));
        check(::nc_def_var_deflate(file_, variable, NC_SHUFFLE, 1, deflateLevel));
        // Each piece is written whole and once, so that to keep more would only take memory.
        const std::size_t size =
            std::accumulate(shape.begin(), shape.end(), sizeof(double), std::multiplies<>());
        check(::nc_set_var_chunk_cache(file_, variable, size, 1, 1));
    }
}

void NetcdfFile::addText(int variable, const char* name, std::string_view text) {
    check(::nc_put_att_text(file_, variable, name, text.size(), text.data()));
}

void NetcdfFile::addInteger(int variable, const char* name, int value) {
    check(::nc_put_att_int(file_, variable, name, NC_INT, 1, &value));
}

void NetcdfFile::addReal(int variable, const char* name, double value) {
    check(::nc_put_att_double(file_, variable, name, NC_DOUBLE, 1, &value));
}

void NetcdfFile::beginValues() {
    check(::nc_enddef(file_));
}

void NetcdfFile::write(int variable, std::span<const std::size_t> start,
                       std::span<const std::size_t> count, const double* values) {
    check(::nc_put_vara_double(file_, variable, start.data(), count.data(), values));
}

void NetcdfFile::write(int variable, std::span<const std::size_t> start,
                       std::span<const std::size_t> count, const int* values) {
    check(::nc_put_vara_int(file_, variable, start.data(), count.data(), values));
}

void NetcdfFile::write(int variable, std::span<const std::size_t> start,
                       std::span<const std::size_t> count, const char* values) {
    check(::nc_put_vara_text(file_, variable, start.data(), count.data(), values));
}

void NetcdfFile::close() {
    check(::nc_sync(file_));
    check(::nc_close(std::exchange(file_, -1)));
}

}  // namespace eqrecord
