#pragma once

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string_view>
#include <vector>

// Lookups that fail with fixed messages whatever the standard library says:
// the loader reports these texts to the user, so they must be the same on
// every platform.
inline constexpr const char* kInvalidMapKey = "invalid map<K, T> key";
inline constexpr const char* kInvalidVectorSubscript = "invalid vector subscript";
inline constexpr const char* kInvalidStoiArgument = "invalid stoi argument";

template <typename Vector> decltype(auto) checkedAt(Vector& v, std::size_t i)
{
    if (i >= v.size())
        throw std::out_of_range(kInvalidVectorSubscript);
    return v[i];
}

// Signed index: a negative one is out of range as well.
template <typename Vector> decltype(auto) checkedAt(Vector& v, long long i)
{
    if (i < 0 || static_cast<unsigned long long>(i) >= v.size())
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
