#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace vanta::wave {

/// Zero-filled storage for samples, aligned for every vector width in use.
template <typename T>
class AlignedBuffer {
public:
    static constexpr std::size_t kAlignment = 64;

    explicit AlignedBuffer(int elements = 0) { resize(elements); }
    AlignedBuffer(const AlignedBuffer&) = delete;
    AlignedBuffer& operator=(const AlignedBuffer&) = delete;
    AlignedBuffer(AlignedBuffer&&) noexcept = default;
    AlignedBuffer& operator=(AlignedBuffer&&) noexcept = default;

    int size() const { return size_; }
    T* data() { return data_.get(); }
    const T* data() const { return data_.get(); }
    T& operator[](int i) { return data_.get()[i]; }
    const T& operator[](int i) const { return data_.get()[i]; }

    /// Keeps the elements that fit; what is new is zero. Below 1 the storage is freed. Allocates.
    void resize(int elements) {
        if (elements == size_ && (data_ || elements == 0)) return;
        if (elements < 1) {
            data_.reset();
            size_ = 0;
            return;
        }
        const std::size_t bytes =
            (static_cast<std::size_t>(elements) * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
        Storage fresh(static_cast<T*>(::operator new(bytes, std::align_val_t(kAlignment))));
        std::memset(static_cast<void*>(fresh.get()), 0, bytes);
        if (data_) {
            std::memcpy(fresh.get(), data_.get(),
                        static_cast<std::size_t>(std::min(size_, elements)) * sizeof(T));
        }
        data_ = std::move(fresh);
        size_ = elements;
    }

    void clear() {
        if (data_)
            std::memset(static_cast<void*>(data_.get()), 0, static_cast<std::size_t>(size_) * sizeof(T));
    }

private:
    struct Free {
        void operator()(T* p) const { ::operator delete(p, std::align_val_t(kAlignment)); }
    };
    using Storage = std::unique_ptr<T, Free>;

    int size_ = 0;
    Storage data_;
};

}  // namespace vanta::wave
