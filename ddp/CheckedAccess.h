#pragma once

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <vector>

// Lookups that fail with fixed messages whatever the standard library says:
// the loader reports these texts to the user, so they must be the same on
// every platform.
inline constexpr const char* kInvalidMapKey = "invalid map<K, T> key";
inline constexpr const char* kInvalidVectorSubscript = "invalid vector subscript";
inline constexpr const char* kInvalidStoiArgument = "invalid stoi argument";

// Any integer index; a negative one is out of range as well.
template <typename Vector, typename Index> decltype(auto) checkedAt(Vector& v, Index i)
{
    static_assert(std::is_integral_v<Index>, "checkedAt takes an integer index");
    if constexpr (std::is_signed_v<Index>) {
        if (i < 0)
            throw std::out_of_range(kInvalidVectorSubscript);
    }
    if (static_cast<std::make_unsigned_t<Index>>(i) >= v.size())
        throw std::out_of_range(kInvalidVectorSubscript);
    return v[static_cast<std::size_t>(i)];
}

template <typename Map, typename Key> decltype(auto) checkedMapAt(Map& m, const Key& key)
{
    auto it = m.find(key);
    if (it == m.end())
        throw std::out_of_range(kInvalidMapKey);
    return (it->second);
}

// Parses like std::stoi (leading white space, optional sign, at least one
// digit, anything after the digits ignored) and throws std::invalid_argument
// with "invalid stoi argument" when there is no number.
int checkedStoi(std::string_view text);
