#include "aax_packet_dispatcher.hpp"

#include <cstring>
#include <utility>

AAX_Result AAX_CPacketDispatcher::RegisterPacket(const AAX_IParameter& parameter, AAX_CFieldIndex field,
                                                 std::uint32_t size, Handler handler) {
    if (size > kLargestPacket) return AAX_ERROR_INVALID_ARGUMENT;
    packets_.emplace_back(parameter, field, size, std::move(handler));
    return AAX_SUCCESS;
}

void AAX_CPacketDispatcher::SetDirty(AAX_CParamID id) {
    for (Packet& packet : packets_) {
        if (std::strcmp(packet.parameter.Identifier(), id) == 0) packet.isDirty = true;
    }
}

AAX_Result AAX_CPacketDispatcher::Dispatch() {
    if (!controller_) return AAX_ERROR_NULL_OBJECT;
    // Two at once could send an older value last.
    const std::lock_guard held(dispatching_);
    for (Packet& packet : packets_) {
        if (!packet.isDirty.exchange(false)) continue;
        alignas(std::max_align_t) std::byte data[kLargestPacket]{};
        packet.handler(packet.parameter, data);
        const AAX_Result result = controller_->PostPacket(packet.field, data, packet.size);
        if (result == AAX_SUCCESS) continue;
        packet.isDirty = true;
        return result;
    }
    return AAX_SUCCESS;
}
