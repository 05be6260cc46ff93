// Random choices that are the same on every machine for the same seed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace soak {

class Chance {
public:
    /// Every step draws from a sequence of its own, so that leaving one out changes no other.
    Chance(std::uint64_t seed, std::uint64_t step) : state_(seed * 0x9E3779B97F4A7C15U + step) {
        (void)next();
    }

    /// 0 to bound - 1.
    int below(int bound) { return static_cast<int>(next() % static_cast<std::uint64_t>(bound)); }
    bool oneIn(int times) { return below(times) == 0; }

    template <class T>
    T oneOf(std::initializer_list<T> values) {
        return *(values.begin() + below(static_cast<int>(values.size())));
    }

private:
    /// SplitMix64, published by G. Steele, D. Lea and C. Flood in 2014.
    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15U;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31);
    }

    std::uint64_t state_;
};

}  // namespace soak
