// ChainedHashTable: the one string-keyed chained hash table behind user hash tables, string sets,
// keyword tables and the parts database. Their results depend on its exact behaviour, so it is
// spelled out:
// - the bucket of a key is hashValue(key) modulo the bucket count (hashValue ignores ASCII case);
// - keys are compared with stricmp (ASCII case ignored);
// - a new entry goes to the head of its bucket's chain, so the newest match is found first;
// - with a load limit L > 0 the table grows when size / L exceeds the bucket count: the bucket
//   count becomes 2n + 1 and every chain keeps the relative order of its entries; with L = 0 it
//   never grows;
// - walking the table visits buckets in index order and each chain from its head.
#pragma once

#include "support/text.hpp"

#include <cstdint>
#include <forward_list>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

template <class T>
class ChainedHashTable {
public:
    struct Entry {
        std::string key;
        T value;
    };

    explicit ChainedHashTable(size_t buckets = 101, unsigned loadLimit = 0)
        : buckets_(buckets ? buckets : 1), loadLimit_(loadLimit) {}

    size_t size() const { return size_; }
    size_t bucketCount() const { return buckets_.size(); }
    size_t bucketOf(std::string_view key) const { return hashValue(key) % buckets_.size(); }

    void insert(std::string key, T value) {
        buckets_[bucketOf(key)].push_front(Entry{std::move(key), std::move(value)});
        ++size_;
        if (loadLimit_ && size_ / loadLimit_ > buckets_.size()) grow();
    }

    // The first (newest) entry with this key, or null.
    T* find(std::string_view key) {
        for (Entry& e : buckets_[bucketOf(key)])
            if (iequals(e.key, key)) return &e.value;
        return nullptr;
    }
    const T* find(std::string_view key) const { return const_cast<ChainedHashTable*>(this)->find(key); }

    // Calls f(entry) for every entry with this key, newest first.
    template <class F>
    void forEachMatch(std::string_view key, F f) const {
        for (const Entry& e : buckets_[bucketOf(key)])
            if (iequals(e.key, key)) f(e);
    }

    // Removes every entry with this key; returns how many.
    size_t removeAll(std::string_view key) {
        auto& chain = buckets_[bucketOf(key)];
        size_t before = size_;
        chain.remove_if([&](const Entry& e) {
            if (!iequals(e.key, key)) return false;
            --size_;
            return true;
        });
        return before - size_;
    }

    // Calls f(entry) for every entry: buckets in index order, each chain from its head.
    template <class F>
    void forEach(F f) const {
        for (const auto& chain : buckets_)
            for (const Entry& e : chain) f(e);
    }

    void clear() {
        for (auto& chain : buckets_) chain.clear();
        size_ = 0;
    }

private:
    void grow() {
        std::vector<std::forward_list<Entry>> old(2 * buckets_.size() + 1);
        old.swap(buckets_);
        for (auto& chain : old) {
            // Re-insert from the tail so each new chain keeps the old relative order.
            std::vector<Entry*> entries;
            for (Entry& e : chain) entries.push_back(&e);
            for (auto it = entries.rbegin(); it != entries.rend(); ++it)
                buckets_[bucketOf((*it)->key)].push_front(std::move(**it));
        }
    }

    std::vector<std::forward_list<Entry>> buckets_;
    unsigned loadLimit_;
    size_t size_ = 0;
};

}  // namespace wavex
