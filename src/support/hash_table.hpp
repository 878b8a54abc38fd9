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
// Keys are owned strings; a table keyed by std::string_view copies no text and refers to strings
// that outlive it (the arguments of a call, for the tables a function uses while it runs).
#pragma once

#include "support/text.hpp"

#include <cstdint>
#include <forward_list>
#include <string>
#include <string_view>
#include <vector>

namespace wavex {

template <class T, class Key = std::string>
class ChainedHashTable {
public:
    struct Entry {
        Key key;
        T value;
        uint32_t hash;  // hashValue(key): lookups and growth compare and place by it, not by the text
    };

    explicit ChainedHashTable(size_t buckets = 101, unsigned loadLimit = 0)
        : buckets_(buckets ? buckets : 1), loadLimit_(loadLimit) {}

    size_t size() const { return size_; }
    size_t bucketCount() const { return buckets_.size(); }
    size_t bucketOf(std::string_view key) const { return hashValue(key) % buckets_.size(); }

    void insert(Key key, T value) {
        uint32_t h = hashValue(key);
        buckets_[h % buckets_.size()].push_front(Entry{std::move(key), std::move(value), h});
        ++size_;
        if (loadLimit_ && size_ / loadLimit_ > buckets_.size()) grow();
    }

    // The first (newest) entry with this key, or null.
    T* find(std::string_view key) {
        uint32_t h = hashValue(key);
        for (Entry& e : buckets_[h % buckets_.size()])
            if (e.hash == h && iequals(e.key, key)) return &e.value;
        return nullptr;
    }
    const T* find(std::string_view key) const { return const_cast<ChainedHashTable*>(this)->find(key); }

    // Calls f(entry) for every entry with this key, newest first.
    template <class F>
    void forEachMatch(std::string_view key, F f) const {
        uint32_t h = hashValue(key);
        for (const Entry& e : buckets_[h % buckets_.size()])
            if (e.hash == h && iequals(e.key, key)) f(e);
    }

    // Removes every entry with this key; returns how many.
    size_t removeAll(std::string_view key) {
        uint32_t h = hashValue(key);
        auto& chain = buckets_[h % buckets_.size()];
        size_t before = size_;
        chain.remove_if([&](const Entry& e) {
            if (e.hash != h || !iequals(e.key, key)) return false;
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
    // Moves the nodes, allocating none. The old buckets are taken from the last to the first and
    // each chain from its head, every entry going to the tail of its new chain: a new chain holds
    // the entries of higher old buckets first, each group in its old relative order.
    void grow() {
        std::vector<std::forward_list<Entry>> old(2 * buckets_.size() + 1);
        old.swap(buckets_);
        std::vector<typename std::forward_list<Entry>::iterator> tails;
        tails.reserve(buckets_.size());
        for (auto& chain : buckets_) tails.push_back(chain.before_begin());
        for (auto chain = old.rbegin(); chain != old.rend(); ++chain) {
            while (!chain->empty()) {
                size_t b = chain->front().hash % buckets_.size();
                buckets_[b].splice_after(tails[b], *chain, chain->before_begin());
                ++tails[b];
            }
        }
    }

    std::vector<std::forward_list<Entry>> buckets_;
    unsigned loadLimit_;
    size_t size_ = 0;
};

}  // namespace wavex
