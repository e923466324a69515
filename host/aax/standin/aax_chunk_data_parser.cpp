#include "aax_chunk_data_parser.hpp"

#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "numbers are copied as they lie in memory");

namespace {

constexpr char kTag[4] = {'A', 'A', 'X', 'l'};
enum Type : std::uint32_t { kInt32 = 1, kDouble = 2 };

class Reader {
public:
    Reader(const char* data, std::size_t size) : data_(data), left_(size) {}

    bool take(void* to, std::size_t size) {
        if (size > left_) return false;
        std::memcpy(to, data_, size);
        skip(size);
        return true;
    }
    bool take(std::string* text, std::size_t size) {
        if (size > left_) return false;
        text->assign(data_, size);
        skip(size);
        return true;
    }

private:
    void skip(std::size_t size) {
        data_ += size;
        left_ -= size;
    }

    const char* data_;
    std::size_t left_;
};

template <typename T>
bool takeValue(Reader& reader, std::variant<std::int32_t, double>* value) {
    T number{};
    if (!reader.take(&number, sizeof(number))) return false;
    *value = number;
    return true;
}

}  // namespace

std::size_t AAX_CChunkDataParser::GetChunkDataSize() const {
    std::size_t size = sizeof(kTag) + sizeof(std::uint32_t);
    for (const Entry& entry : entries_) {
        size += 2 * sizeof(std::uint32_t) + entry.name.size();
        size += std::holds_alternative<double>(entry.value) ? sizeof(double) : sizeof(std::int32_t);
    }
    return size;
}

void AAX_CChunkDataParser::GetChunkData(char* data) const {
    const auto put = [&data](const void* from, std::size_t size) {
        std::memcpy(data, from, size);
        data += size;
    };
    const auto putNumber = [&put](std::uint32_t number) { put(&number, sizeof(number)); };
    put(kTag, sizeof(kTag));
    putNumber(static_cast<std::uint32_t>(entries_.size()));
    for (const Entry& entry : entries_) {
        putNumber(std::holds_alternative<double>(entry.value) ? kDouble : kInt32);
        putNumber(static_cast<std::uint32_t>(entry.name.size()));
        put(entry.name.data(), entry.name.size());
        std::visit([&put](auto value) { put(&value, sizeof(value)); }, entry.value);
    }
}

bool AAX_CChunkDataParser::LoadChunk(const char* data, std::size_t size) {
    entries_.clear();
    next_ = 0;
    Reader reader(data, size);
    char tag[sizeof(kTag)];
    std::uint32_t count = 0;
    if (!reader.take(tag, sizeof(tag)) || std::memcmp(tag, kTag, sizeof(kTag)) != 0) return false;
    if (!reader.take(&count, sizeof(count))) return false;
    std::vector<Entry> read;
    // Not reserved: the count may be anything.
    for (; count > 0; --count) {
        std::uint32_t type = 0;
        std::uint32_t length = 0;
        Entry& entry = read.emplace_back();
        if (!reader.take(&type, sizeof(type)) || !reader.take(&length, sizeof(length))) return false;
        if (!reader.take(&entry.name, length)) return false;
        if (type != kInt32 && type != kDouble) return false;
        if (!(type == kDouble ? takeValue<double> : takeValue<std::int32_t>)(reader, &entry.value))
            return false;
    }
    entries_ = std::move(read);
    return true;
}
