// Array<T>: the contiguous, growable buffer behind every vector's data.
//
// Unlike std::vector it leaves new elements uninitialised (a result is always written in full by
// its kernel, so zero-filling 80 MB first would double the memory traffic), and it takes large
// blocks from a pool that keeps recently freed blocks mapped, so a chain of large temporaries
// (`v*2+1`) does not pay for fresh page faults at every step.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "wavex/exceptions.hpp"

namespace wavex {

// Raw storage for arrays. Blocks of a megabyte or more are backed by transparent huge pages and
// recycled through a small pool; smaller ones come from malloc. Failure throws MemoryException
// naming `elementType`.
void* allocateBlock(size_t bytes, size_t* granted, const char* elementType);
void releaseBlock(void* block, size_t granted) noexcept;

// The largest single array the library makes; a larger request throws MemoryException at once
// instead of exhausting the machine slowly. By default half the physical memory.
void setAllocationLimit(size_t bytes);
size_t allocationLimit();

template <class T> struct ElementName { static constexpr const char* value = "T"; };
template <> struct ElementName<double> { static constexpr const char* value = "double"; };
template <> struct ElementName<std::complex<double>> { static constexpr const char* value = "complex"; };

// Memory an Array reads in place but does not own (a numpy array the Python module wraps): the
// owner is handed back through `release` when the array is done with it.
struct ForeignOwner {
    void (*release)(void* owner) = nullptr;
    void* owner = nullptr;
};

template <class T>
class Array {
    static_assert(std::is_trivially_copyable_v<T>, "Array holds plain numeric data only");

public:
    Array() = default;
    explicit Array(size_t n) { resize(n); }
    Array(const T* values, size_t n) { append(values, n); }
    Array(std::initializer_list<T> values) { append(values.begin(), values.size()); }
    Array(const Array& other) { append(other.data_, other.size_); }
    Array(Array&& other) noexcept { swap(other); }
    Array& operator=(Array other) noexcept { swap(other); return *this; }
    ~Array() { release(); }

    // n elements at `data`, read in place; growing the array moves them into memory of its own.
    static Array adopt(T* data, size_t n, ForeignOwner owner) {
        Array a;
        a.data_ = data;
        a.size_ = a.capacity_ = n;
        a.foreign_ = owner;
        return a;
    }

    void swap(Array& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        std::swap(foreign_, other.foreign_);
    }

    T* data() noexcept { return data_; }
    const T* data() const noexcept { return data_; }
    size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    T& operator[](size_t i) noexcept { return data_[i]; }
    const T& operator[](size_t i) const noexcept { return data_[i]; }
    T* begin() noexcept { return data_; }
    T* end() noexcept { return data_ + size_; }
    const T* begin() const noexcept { return data_; }
    const T* end() const noexcept { return data_ + size_; }

    void reserve(size_t n) {
        if (n <= capacity_) return;
        if (n > SIZE_MAX / sizeof(T) / 2) throw MemoryException(ElementName<T>::value);
        size_t granted = 0;
        T* fresh = static_cast<T*>(allocateBlock(n * sizeof(T), &granted, ElementName<T>::value));
        if (size_) std::memcpy(static_cast<void*>(fresh), data_, size_ * sizeof(T));
        release();
        data_ = fresh;
        capacity_ = granted / sizeof(T);
    }
    // New elements are left uninitialised.
    void resize(size_t n) {
        if (n > capacity_) reserve(n > 2 * capacity_ ? n : 2 * capacity_);
        size_ = n;
    }
    void assign(size_t n, const T& value) {
        resize(n);
        for (size_t i = 0; i < n; ++i) data_[i] = value;
    }
    void append(const T* values, size_t n) {
        if (n == 0) return;
        size_t old = size_;
        resize(size_ + n);
        std::memcpy(static_cast<void*>(data_ + old), values, n * sizeof(T));
    }
    void push_back(const T& value) {
        resize(size_ + 1);
        data_[size_ - 1] = value;
    }
    void clear() noexcept { size_ = 0; }

private:
    void release() noexcept {
        if (foreign_.release) {
            foreign_.release(foreign_.owner);
            foreign_ = {};
        } else {
            releaseBlock(data_, capacity_ * sizeof(T));
        }
    }

    T* data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
    ForeignOwner foreign_;
};

}  // namespace wavex
