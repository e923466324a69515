#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iosfwd>
#include <istream>
#include <optional>
#include <ostream>
#include <span>
#include <streambuf>
#include <string>
#include <string_view>

namespace vanta {

/// Reads a record of 4-byte little-endian values. A record begins with a header: four characters and an
/// int32 version. A failed read gives 0 and everything after it fails as well, so that a caller asks
/// `failed()` once at the end. Nothing here throws for a file that is missing or cut.
class BinaryDataReader {
public:
    /// Over a stream that somebody else owns.
    explicit BinaryDataReader(std::istream& source) : stream_(&source) {}
    BinaryDataReader(const BinaryDataReader&) = delete;
    BinaryDataReader& operator=(const BinaryDataReader&) = delete;
    virtual ~BinaryDataReader() = default;

    /// The tag, or an empty text if the stream failed.
    std::string readHeader();
    /// Reads a header and compares its tag, exactly.
    bool expectHeader(const std::string& tag);
    int readInt();
    float readFloat();
    /// As many `readFloat`, at the cost of one: for samples. Those that could not be read are 0.
    void readFloats(std::span<float> values);

    bool failed() const { return stream_->fail(); }
    /// -1 until a header is read.
    int version() const { return version_; }
    std::istream& stream() { return *stream_; }

protected:
    /// For a derived class that owns its stream and hands it over with `setStream` once that is built.
    BinaryDataReader() = default;
    void setStream(std::istream& source) { stream_ = &source; }

private:
    std::istream* stream_ = nullptr;
    int version_ = -1;
};

/// Writes what BinaryDataReader reads.
class BinaryDataWriter {
public:
    /// Over a stream that somebody else owns.
    explicit BinaryDataWriter(std::ostream& target) : stream_(&target) {}
    BinaryDataWriter(const BinaryDataWriter&) = delete;
    BinaryDataWriter& operator=(const BinaryDataWriter&) = delete;
    virtual ~BinaryDataWriter() = default;

    /// The first four characters of `tag`, padded with zeros, then the version.
    void writeHeader(const std::string& tag, int version);
    void writeInt(int value);
    void writeFloat(float value);
    /// As many `writeFloat`, at the cost of one: for samples.
    void writeFloats(std::span<const float> values);
    /// Leaves the next value as it stands.
    void skip();

    bool failed() const { return stream_->fail(); }
    /// Hands everything to the system. False if any write has failed, a full disk included.
    bool flush();
    std::ostream& stream() { return *stream_; }

protected:
    BinaryDataWriter() = default;
    void setStream(std::ostream& target) { stream_ = &target; }

private:
    std::ostream* stream_ = nullptr;
};

class BinaryFileReader final : public BinaryDataReader {
public:
    explicit BinaryFileReader(const std::filesystem::path& path);

private:
    std::ifstream file_;
};

/// Opens an existing file for reading and writing without truncating it, so that single values can be
/// changed in place: its stream is a std::iostream. A shorter record thus leaves the old tail. Makes a new
/// file otherwise.
class BinaryFileWriter final : public BinaryDataWriter {
public:
    explicit BinaryFileWriter(const std::filesystem::path& path);

private:
    std::fstream file_;
};

/// Reads bytes in memory where they lie. They must outlive the reader.
class BinaryMemoryReader : public BinaryDataReader {
public:
    explicit BinaryMemoryReader(std::span<const std::byte> bytes);

private:
    class SpanBuffer final : public std::streambuf {
    public:
        explicit SpanBuffer(std::span<const std::byte> bytes);

    protected:
        pos_type seekoff(off_type offset, std::ios_base::seekdir from,
                         std::ios_base::openmode which) override;
        pos_type seekpos(pos_type position, std::ios_base::openmode which) override;
    };

    SpanBuffer buffer_;
    std::istream source_;
};

/// Reads a file that is built into the program. A name that is not among the resources reads as failed.
class BinaryResourceReader final : public BinaryMemoryReader {
public:
    explicit BinaryResourceReader(std::string_view name);

private:
    explicit BinaryResourceReader(std::optional<std::span<const std::byte>> found);
};

}  // namespace vanta
