#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "aax_types.hpp"

/// A list of named values of a type, and the data of a chunk that hold it. All numbers are little-endian:
///
///     "AAXl", number of values, then for each
///     a type (1 whole number, 2 double), the length of its name, the name, 4 or 8 bytes of value
class AAX_CChunkDataParser {
public:
    void AddInt32(const std::string& name, std::int32_t value) { entries_.push_back({name, value}); }
    void AddDouble(const std::string& name, double value) { entries_.push_back({name, value}); }
    std::size_t GetNumberOfValues() const { return entries_.size(); }

    /// Looks for a value behind the one that was found last, and from the start again after the end. False
    /// if there is none of that name, or the one that is found has another type; the next search goes on
    /// behind it all the same.
    bool FindInt32(const std::string& name, std::int32_t* value) { return find(name, value); }
    bool FindDouble(const std::string& name, double* value) { return find(name, value); }

    /// Bytes of the data, without a header.
    std::size_t GetChunkDataSize() const;
    /// Into room for as many bytes.
    void GetChunkData(char* data) const;
    /// Takes over a list. False, and the list is empty, if the data are not one or end early.
    bool LoadChunk(const char* data, std::size_t size);

private:
    struct Entry {
        std::string name;
        std::variant<std::int32_t, double> value;
    };

    template <typename T>
    bool find(const std::string& name, T* value) {
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            const std::size_t at = (next_ + i) % entries_.size();
            if (entries_[at].name != name) continue;
            next_ = at + 1;
            const T* found = std::get_if<T>(&entries_[at].value);
            if (found) *value = *found;
            return found != nullptr;
        }
        return false;
    }

    std::vector<Entry> entries_;
    std::size_t next_ = 0;
};
