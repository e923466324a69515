#include "host/lv2/lv2_messages.hpp"

#include <algorithm>
#include <sstream>
#include <string>

#include "foundation/binary_data.hpp"

namespace vanta {
namespace {

const std::string kReport = "VLir";
const std::string kNews = "VLpn";
const std::string kLevels = "VLpl";
constexpr int kVersion = 1;
/// As a session state holds it, without its end.
constexpr std::size_t kNameBytes = 63;

class Writer {
public:
    explicit Writer(const std::string& tag) { writer_.writeHeader(tag, kVersion); }

    BinaryDataWriter& operator*() { return writer_; }
    BinaryDataWriter* operator->() { return &writer_; }
    void raw(std::span<const std::byte> bytes) {
        stream_.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
    }
    void counted(std::span<const std::byte> bytes) {
        writer_.writeInt(static_cast<int>(bytes.size()));
        raw(bytes);
    }
    void surroundings(const Lv2Surroundings& surroundings) {
        writer_.writeInt(static_cast<int>(surroundings.kind));
        counted(surroundings.session);
        counted(surroundings.controllers);
    }
    std::vector<std::byte> bytes() const {
        const std::string text = stream_.str();
        const auto* first = reinterpret_cast<const std::byte*>(text.data());
        return {first, first + text.size()};
    }

private:
    std::ostringstream stream_;
    BinaryDataWriter writer_{stream_};
};

class Reader {
public:
    Reader(std::span<const std::byte> bytes, const std::string& tag) : size_(bytes.size()), reader_(bytes) {
        failed_ = !reader_.expectHeader(tag) || reader_.version() != kVersion;
    }

    bool failed() const { return failed_ || reader_.failed(); }
    int integer() { return reader_.readInt(); }
    float number() { return reader_.readFloat(); }
    /// Of things that take so many bytes each.
    std::size_t count(std::size_t bytesOfEach) {
        const int value = reader_.readInt();
        failed_ = failed() || value < 0 || static_cast<std::size_t>(value) * bytesOfEach > size_;
        return failed_ ? 0 : static_cast<std::size_t>(value);
    }
    std::vector<std::byte> raw(std::size_t size) {
        std::vector<std::byte> bytes(size);
        reader_.stream().read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
        return bytes;
    }
    std::vector<std::byte> rest() {
        if (failed()) return {};
        return raw(size_ - static_cast<std::size_t>(reader_.stream().tellg()));
    }
    Lv2Surroundings surroundings() {
        Lv2Surroundings read;
        const int kind = reader_.readInt();
        failed_ = failed() || kind < 0 || kind > static_cast<int>(Lv2Surroundings::Kind::Whole);
        read.kind = static_cast<Lv2Surroundings::Kind>(failed_ ? 0 : kind);
        read.session = raw(count(1));
        read.controllers = raw(count(1));
        return read;
    }

private:
    std::size_t size_;
    BinaryMemoryReader reader_;
    bool failed_ = false;
};

template <typename Message>
std::optional<Message> ifWhole(const Reader& reader, Message&& message) {
    if (reader.failed()) return {};
    return std::forward<Message>(message);
}

}  // namespace

std::vector<std::byte> bytesOf(const Lv2Report& report) {
    Writer writer(kReport);
    for (const int field : {report.interface, report.heard, report.number, report.isLeaving ? 1 : 0,
                            static_cast<int>(report.commands.size())}) {
        writer->writeInt(field);
    }
    for (const std::uint8_t command : report.commands) writer->writeInt(command);
    writer.surroundings(report.surroundings);
    return writer.bytes();
}

std::optional<Lv2Report> readReport(std::span<const std::byte> bytes) {
    Reader reader(bytes, kReport);
    Lv2Report report;
    report.interface = reader.integer();
    report.heard = reader.integer();
    report.number = reader.integer();
    report.isLeaving = reader.integer() != 0;
    report.commands.resize(reader.count(4));
    for (std::uint8_t& command : report.commands) command = static_cast<std::uint8_t>(reader.integer());
    report.surroundings = reader.surroundings();
    return ifWhole(reader, std::move(report));
}

std::vector<std::byte> bytesOf(const Lv2News& news) {
    Writer writer(kNews);
    writer->writeInt(news.number);
    writer->writeInt(news.heard);
    writer->writeFloat(news.sampleRate);
    writer->writeInt(news.controller);
    writer->writeInt(static_cast<int>(news.values.size()));
    for (const auto& [index, value] : news.values) {
        writer->writeInt(index);
        writer->writeFloat(value);
    }
    writer.surroundings(news.surroundings);
    return writer.bytes();
}

std::optional<Lv2News> readNews(std::span<const std::byte> bytes) {
    Reader reader(bytes, kNews);
    Lv2News news;
    news.number = reader.integer();
    news.heard = reader.integer();
    news.sampleRate = reader.number();
    news.controller = reader.integer();
    news.values.resize(reader.count(8));
    for (auto& [index, value] : news.values) {
        index = reader.integer();
        value = reader.number();
    }
    news.surroundings = reader.surroundings();
    return ifWhole(reader, std::move(news));
}

std::vector<std::byte> bytesOf(const Lv2Levels& levels) {
    Writer writer(kLevels);
    writer->writeInt(levels.heard);
    writer.raw(levels.thinned);
    return writer.bytes();
}

std::optional<Lv2Levels> readLevels(std::span<const std::byte> bytes) {
    Reader reader(bytes, kLevels);
    Lv2Levels levels;
    levels.heard = reader.integer();
    levels.thinned = reader.rest();
    return ifWhole(reader, std::move(levels));
}

Lv2Standing::Lv2Standing(GenericPlugin& model) : preset(model.presetState().values()) {
    // Each end finds the file on its own.
    preset.path.clear();
    preset.name.resize(std::min(preset.name.size(), kNameBytes));
    CompareStates::Contents compare = model.compareStates().contents();
    slot = compare.current;
    slotsModified = compare.modified;
    slotsFilled = compare.initialized;
    State& other = compare.slots[static_cast<std::size_t>(1 - slot)];
    if (slotsFilled) otherPreset = other.preset.name.substr(0, kNameBytes);
    if (slotsFilled) otherValues = std::move(other.values);
    std::ostringstream stream;
    BinaryDataWriter writer(stream);
    {
        const auto held = model.statics().lock();
        model.statics().controllers.write(writer);
    }
    const std::string map = stream.str();
    const auto* first = reinterpret_cast<const std::byte*>(map.data());
    controllers.assign(first, first + map.size());
}

void takeControllers(GenericPlugin& model, std::span<const std::byte> bytes) {
    BinaryMemoryReader reader(bytes);
    const auto held = model.statics().lock();
    model.statics().controllers.read(reader);
}

}  // namespace vanta
