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
    StyleCheck(const EngineLayout& layout, StyleValues values) : layout_(layout), values_(values) {}

    std::vector<StyleFault> run() {
        checkRanges();
        if (!faults_.empty()) return faults_;  // what follows takes indexes from the values
        checkCounts();
        checkPaths();
        checkSlots();
        return faults_;
    }

private:
    struct Connection {
        int slot;
        int source;
        int target;
    };

    void fault(int position, std::string message) { faults_.push_back({position, std::move(message)}); }
    int activeCount(ElementKind kind) const {
        return values_.integerAt(layout_.group(kind).numActivePosition);
    }
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

    const EngineLayout& layout_;
    StyleValues values_;
    std::vector<Connection> connections_;  ///< accepted so far, in slot order
    std::vector<StyleFault> faults_;
};

void StyleCheck::checkRanges() {
    for (int i = 0; i < values_.size(); ++i) {
        const EngineParameter& parameter = layout_.parameters()[static_cast<std::size_t>(i)];
        const ParameterDescription& description = parameter.description;
        const float value = values_.at(i);
        if (!(value >= description.minimum && value <= description.maximum)) {
            fault(i, fmt::format("{} cannot be {}: use {} to {}", parameter.name, value, description.minimum,
                                 description.maximum));
        } else if (!description.isFloat() && value != std::trunc(value)) {
            fault(i, fmt::format("{} cannot be {}: use a whole number", parameter.name, value));
        }
    }
}

void StyleCheck::checkCounts() {
    for (ElementKind kind = kFirstElement; kind <= ElementKind::Slot; kind = next(kind)) {
        const ElementGroup& group = layout_.group(kind);
        if (activeCount(kind) > group.built) {
            fault(group.numActivePosition,
                  fmt::format("{} cannot be {}: use at most {}, as many as a channel has",
                              layout_.parameters()[static_cast<std::size_t>(group.numActivePosition)].name,
                              activeCount(kind), group.built));
        }
    }
}

/// Limits that no count shows: a VCA would silently take a lower number, a Detector would not clip.
void StyleCheck::checkPaths() {
    const DynamicsEngineConfiguration& configuration = layout_.configuration();
    for (int vca = 0; vca < activeCount(ElementKind::Vca); ++vca) {
        const auto check = [&](int parameter, int limit) {
            checkAtMost(layout_.position(ElementKind::Vca, vca, parameter), limit);
        };
        check(parameterIndex(ElementKind::Vca, "Num Convolvers In Gain Path"),
              configuration.maxConvolversInGainPath);
        check(parameterIndex(ElementKind::Vca, "Num SmartClippers In Gain Path"),
              configuration.maxSmartClippersInGainPath);
    }
    constexpr int kSmartClipping = choiceValue(ElementKind::Detector, "Mode", "Smart Clipping");
    for (int i = configuration.maxOutputSmartClippers; i < activeCount(ElementKind::Detector); ++i) {
        const int mode =
            layout_.position(ElementKind::Detector, i, parameterIndex(ElementKind::Detector, "Mode"));
        if (values_.integerAt(mode) != kSmartClipping) continue;
        fault(mode, fmt::format("Detector {} has no SmartClipper: use another Mode, or Detector {}", i + 1,
                                configuration.maxOutputSmartClippers));
    }
}

void StyleCheck::checkAtMost(int position, int limit) {
    if (values_.integerAt(position) <= limit) return;
    const std::string& name = layout_.parameters()[static_cast<std::size_t>(position)].name;
    fault(position, fmt::format("{} cannot be {}: use at most {}", name, values_.integerAt(position), limit));
}

void StyleCheck::checkSlots() {
    for (int slot = 0; slot < activeCount(ElementKind::Slot); ++slot) {
        const Connection connection{slot,
                                    values_.integerAt(layout_.slotPosition(slot, SlotField::Source)) - 1,
                                    values_.integerAt(layout_.slotPosition(slot, SlotField::Target)) - 1};
        checkEnds(connection);
        const bool bypassed = values_.integerAt(layout_.slotPosition(slot, SlotField::Bypassed)) != 0;
        if (connection.source < 0 || connection.target < 0 || bypassed) continue;
        checkRepeated(connection);
        if (closesLoop(connection)) {
            fault(layout_.slotPosition(slot, SlotField::Target),
                  fmt::format("slot {} closes a loop, because {} depends on {}: remove a slot of the loop",
                              slot + 1, layout_.sources()[static_cast<std::size_t>(connection.source)].name,
                              layout_.targets()[static_cast<std::size_t>(connection.target)].name));
        } else {
            connections_.push_back(connection);
        }
    }
    checkOutput();
}

void StyleCheck::checkOutput() {
    for (const Connection& connection : connections_) {
        if (connection.target == kOutputTarget) return;
    }
    fault(layout_.group(ElementKind::Slot).numActivePosition,
          "the style is silent: connect a source to Output");
}

void StyleCheck::checkEnds(const Connection& connection) {
    const auto check = [&](SlotField field, std::string_view direction, const auto& end) {
        if (active(end.kind, end.element)) return;
        fault(layout_.slotPosition(connection.slot, field),
              fmt::format("slot {} {} \"{}\", which is not active {}", connection.slot + 1, direction,
                          end.name, whileInactiveText(layout_, values_, end.kind, end.element)));
    };
    if (connection.source >= 0) {
        check(SlotField::Source, "takes from",
              layout_.sources()[static_cast<std::size_t>(connection.source)]);
    }
    if (connection.target >= 0) {
        check(SlotField::Target, "goes to", layout_.targets()[static_cast<std::size_t>(connection.target)]);
    }
}

void StyleCheck::checkRepeated(const Connection& connection) {
    for (const Connection& other : connections_) {
        if (other.source != connection.source || other.target != connection.target) continue;
        fault(layout_.slotPosition(connection.slot, SlotField::Source),
              fmt::format("slot {} repeats the connection of slot {}: remove one of them",
                          connection.slot + 1, other.slot + 1));
        return;
    }
}

bool StyleCheck::closesLoop(const Connection& connection) const {
    std::vector<bool> visited(layout_.targets().size(), false);
    return slotReaches(connection, connection.target, visited);
}

/// A slot is made from its level and from everything that its source reads. A main control reads its own
/// target: this goes beyond the matrix's own loop check, which takes main controls for free ends.
bool StyleCheck::slotReaches(const Connection& connection, int wanted, std::vector<bool>& visited) const {
    const EngineSource& source = layout_.sources()[static_cast<std::size_t>(connection.source)];
    if (reaches(layout_.targetIndex(ElementKind::Slot, connection.slot, 0), wanted, visited)) return true;
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
    for (const Connection& connection : connections_) {
        if (connection.target == from && slotReaches(connection, wanted, visited)) return true;
    }
    return false;
}

}  // namespace

std::vector<StyleFault> checkStyle(const EngineLayout& layout, StyleValues values) {
    return StyleCheck(layout, values).run();
}

bool isActive(const EngineLayout& layout, StyleValues values, int position) {
    const EngineParameter& parameter = layout.parameters()[static_cast<std::size_t>(position)];
    if (parameter.role != EngineParameter::Role::Element) return true;
    const int count = layout.group(parameter.kind).numActivePosition;
    return static_cast<float>(parameter.element) < values.at(count);
}

std::string whileInactiveText(const EngineLayout& layout, StyleValues values, ElementKind kind, int element) {
    const int position = layout.group(kind).numActivePosition;
    return fmt::format("while {} is {}: raise it to {}",
                       layout.parameters()[static_cast<std::size_t>(position)].name, values.at(position),
                       element + 1);
}

}  // namespace vanta
