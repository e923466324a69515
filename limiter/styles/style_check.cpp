#include "limiter/styles/style_check.hpp"

#include <fmt/format.h>

#include <cmath>

namespace vanta {
namespace {

bool hasCount(ElementKind kind) {
    return kind >= kFirstElement && kind <= ElementKind::Slot;
}

class StyleCheck {
public:
    StyleCheck(const EngineLayout& engineLayout, std::span<const float> styleValues)
        : layout(engineLayout), values(styleValues) {}

    std::vector<StyleFault> run() {
        checkRanges();
        if (!faults.empty()) return faults;  // what follows takes indexes from the values
        checkCounts();
        checkPaths();
        checkSlots();
        return faults;
    }

private:
    struct Connection {
        int slot;
        int source;
        int target;
    };

    void fault(int position, std::string message) { faults.push_back({position, std::move(message)}); }
    int integer(int position) const { return static_cast<int>(values[static_cast<std::size_t>(position)]); }
    int activeCount(ElementKind kind) const { return integer(layout.group(kind).numActivePosition); }
    bool active(ElementKind kind, int element) const {
        return !hasCount(kind) || element < activeCount(kind);
    }

    void checkRanges();
    void checkCounts();
    void checkPaths();
    void checkAtMost(int position, int limit);
    void checkSlots();
    void checkOutput();
    void checkEnds(const Connection& connection);
    void checkRepeated(const Connection& connection);
    bool closesLoop(const Connection& connection) const;
    bool reaches(int from, int wanted, std::vector<bool>& visited) const;
    bool slotReaches(const Connection& connection, int wanted, std::vector<bool>& visited) const;

    const EngineLayout& layout;
    std::span<const float> values;
    std::vector<Connection> connections;  ///< accepted so far, in slot order
    std::vector<StyleFault> faults;
};

void StyleCheck::checkRanges() {
    for (int i = 0; i < static_cast<int>(values.size()); ++i) {
        const EngineParameter& parameter = layout.parameters()[static_cast<std::size_t>(i)];
        const ParameterDescription& description = parameter.description;
        const float value = values[static_cast<std::size_t>(i)];
        if (!(value >= description.minimum && value <= description.maximum)) {
            fault(i, fmt::format("{} is {}, expected {} to {}", parameter.name, value, description.minimum,
                                 description.maximum));
        } else if (!description.isFloat() && value != std::trunc(value)) {
            fault(i, fmt::format("{} is {}, expected a whole number", parameter.name, value));
        }
    }
}

void StyleCheck::checkCounts() {
    for (ElementKind kind = kFirstElement; kind <= ElementKind::Slot; kind = next(kind)) {
        const ElementGroup& group = layout.group(kind);
        if (activeCount(kind) > group.built) {
            fault(group.numActivePosition,
                  fmt::format("{}, but {} {} built", activeCountText(layout, values, kind), group.built,
                              group.built == 1 ? "is" : "are"));
        }
    }
}

/// Limits that no count shows: a VCA would silently take a lower number, a Detector would not clip.
void StyleCheck::checkPaths() {
    const DynamicsEngineConfiguration& configuration = layout.configuration();
    for (int vca = 0; vca < activeCount(ElementKind::Vca); ++vca) {
        checkAtMost(layout.position(ElementKind::Vca, vca, 3), configuration.maxConvolversInGainPath);
        checkAtMost(layout.position(ElementKind::Vca, vca, 4), configuration.maxSmartClippersInGainPath);
    }
    constexpr int kSmartClipping = 2;
    for (int i = configuration.maxOutputSmartClippers; i < activeCount(ElementKind::Detector); ++i) {
        const int mode = layout.position(ElementKind::Detector, i, 0);
        if (integer(mode) != kSmartClipping) continue;
        fault(mode, fmt::format("Detector {} has no SmartClipper, the last that has one is Detector {}",
                                i + 1, configuration.maxOutputSmartClippers));
    }
}

void StyleCheck::checkAtMost(int position, int limit) {
    if (integer(position) <= limit) return;
    const std::string& name = layout.parameters()[static_cast<std::size_t>(position)].name;
    fault(position, fmt::format("{} is {}, but at most {} counts", name, integer(position), limit));
}

void StyleCheck::checkSlots() {
    for (int slot = 0; slot < activeCount(ElementKind::Slot); ++slot) {
        const Connection connection{slot, integer(layout.slotPosition(slot, SlotField::Source)) - 1,
                                    integer(layout.slotPosition(slot, SlotField::Target)) - 1};
        checkEnds(connection);
        const bool bypassed = integer(layout.slotPosition(slot, SlotField::Bypassed)) != 0;
        if (connection.source < 0 || connection.target < 0 || bypassed) continue;
        checkRepeated(connection);
        if (closesLoop(connection)) {
            fault(layout.slotPosition(slot, SlotField::Target),
                  fmt::format("slot {} closes a loop: {} is made from what reaches {}", slot + 1,
                              layout.sources()[static_cast<std::size_t>(connection.source)].name,
                              layout.targets()[static_cast<std::size_t>(connection.target)].name));
        } else {
            connections.push_back(connection);
        }
    }
    checkOutput();
}

void StyleCheck::checkOutput() {
    for (const Connection& connection : connections) {
        if (connection.target == kOutputTarget) return;
    }
    fault(layout.group(ElementKind::Slot).numActivePosition, "no slot reaches Output: the style is silent");
}

void StyleCheck::checkEnds(const Connection& connection) {
    const auto check = [&](SlotField field, std::string_view role, const auto& end) {
        if (active(end.kind, end.element)) return;
        fault(layout.slotPosition(connection.slot, field),
              fmt::format("slot {}: the {} \"{}\" is not active: {}", connection.slot + 1, role, end.name,
                          activeCountText(layout, values, end.kind)));
    };
    if (connection.source >= 0) {
        check(SlotField::Source, "source", layout.sources()[static_cast<std::size_t>(connection.source)]);
    }
    if (connection.target >= 0) {
        check(SlotField::Target, "target", layout.targets()[static_cast<std::size_t>(connection.target)]);
    }
}

void StyleCheck::checkRepeated(const Connection& connection) {
    for (const Connection& other : connections) {
        if (other.source != connection.source || other.target != connection.target) continue;
        fault(layout.slotPosition(connection.slot, SlotField::Source),
              fmt::format("slot {} makes the connection of slot {} once more", connection.slot + 1,
                          other.slot + 1));
        return;
    }
}

bool StyleCheck::closesLoop(const Connection& connection) const {
    std::vector<bool> visited(layout.targets().size(), false);
    return slotReaches(connection, connection.target, visited);
}

/// A slot is made from its level and from everything that its source reads. A main control reads its own
/// target: this goes beyond the matrix's own loop check, which takes main controls for free ends.
bool StyleCheck::slotReaches(const Connection& connection, int wanted, std::vector<bool>& visited) const {
    const EngineSource& source = layout.sources()[static_cast<std::size_t>(connection.source)];
    if (reaches(layout.targetIndex(ElementKind::Slot, connection.slot, 0), wanted, visited)) return true;
    for (const int input : source.inputs) {
        if (reaches(input, wanted, visited)) return true;
    }
    const int control = connection.source - kFirstMainSource;
    return control >= 0 && control < kOutputTarget && reaches(control, wanted, visited);
}

bool StyleCheck::reaches(int from, int wanted, std::vector<bool>& visited) const {
    if (from == wanted) return true;
    if (visited[static_cast<std::size_t>(from)]) return false;
    visited[static_cast<std::size_t>(from)] = true;
    for (const Connection& connection : connections) {
        if (connection.target == from && slotReaches(connection, wanted, visited)) return true;
    }
    return false;
}

}  // namespace

std::vector<StyleFault> checkStyle(const EngineLayout& layout, std::span<const float> values) {
    return StyleCheck(layout, values).run();
}

bool isActive(const EngineLayout& layout, std::span<const float> values, int position) {
    const EngineParameter& parameter = layout.parameters()[static_cast<std::size_t>(position)];
    if (parameter.role != EngineParameter::Role::Element) return true;
    const int count = layout.group(parameter.kind).numActivePosition;
    return static_cast<float>(parameter.element) < values[static_cast<std::size_t>(count)];
}

std::string activeCountText(const EngineLayout& layout, std::span<const float> values, ElementKind kind) {
    const auto position = static_cast<std::size_t>(layout.group(kind).numActivePosition);
    return fmt::format("{} is {}", layout.parameters()[position].name, values[position]);
}

}  // namespace vanta
