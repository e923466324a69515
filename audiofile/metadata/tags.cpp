#include "audiofile/metadata/tags.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace vanta {

namespace {

/// A number, its total, and other names of the total.
struct Numbering {
    const char* number;
    const char* total;
    const char* otherTotal;
};
constexpr std::array kNumberings{Numbering{"TRACKNUMBER", "TRACKTOTAL", "TOTALTRACKS"},
                                 Numbering{"DISCNUMBER", "DISCTOTAL", "TOTALDISCS"}};

}  // namespace

void Tags::addMissing(const TagLib::PropertyMap& more) {
    for (const auto& [name, values] : more) {
        if (!fields.contains(name)) fields.insert(name, values);
    }
}

bool isOutdated(const TagLib::String& field) {
    const std::string name = field.upper().to8Bit(true);
    const auto begins = [&](std::string_view start) { return name.starts_with(start); };
    return begins("REPLAYGAIN_") || begins("R128_") || begins("MP3GAIN_") || name.ends_with("ITUNNORM") ||
           name.ends_with("ITUNSMPB") || name == "WAVEFORMATEXTENSIBLE_CHANNEL_MASK";
}

void removeOutdated(TagLib::PropertyMap& fields) {
    std::vector<TagLib::String> names;
    for (const auto& [name, values] : fields) {
        if (isOutdated(name)) names.push_back(name);
    }
    for (const TagLib::String& name : names) fields.erase(name);
}

void splitNumbers(TagLib::PropertyMap& fields) {
    for (const Numbering& each : kNumberings) {
        if (!fields.contains(each.number) || fields[each.number].isEmpty()) continue;
        const TagLib::String text = fields[each.number].front();
        const int slash = text.find("/");
        if (slash < 0) continue;
        fields.replace(each.number, text.substr(0, static_cast<unsigned>(slash)));
        if (!fields.contains(each.total) && !fields.contains(each.otherTotal))
            fields.insert(each.total, text.substr(static_cast<unsigned>(slash) + 1));
    }
}

TagLib::PropertyMap withJoinedNumbers(TagLib::PropertyMap fields) {
    for (const Numbering& each : kNumberings) {
        for (const char* total : {each.total, each.otherTotal}) {
            if (!fields.contains(total) || fields[total].isEmpty()) continue;
            const TagLib::String of = fields[total].front();
            const auto number =
                fields.contains(each.number) ? fields[each.number].toString() : TagLib::String("0");
            if (number.find("/") < 0) fields.replace(each.number, number + "/" + of);
            fields.erase(total);
        }
    }
    return fields;
}

TagLib::String textFrom(std::string bytes) {
    bytes.resize(std::min(bytes.find('\0'), bytes.size()));
    const TagLib::String text(bytes, TagLib::String::UTF8);
    const bool isUtf8 = !text.isEmpty() && text.to8Bit(true) == bytes;
    return isUtf8 ? text : TagLib::String(bytes, TagLib::String::Latin1);
}

}  // namespace vanta
