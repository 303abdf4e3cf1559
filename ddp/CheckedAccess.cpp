#include "ddp/CheckedAccess.h"

#include <climits>

int checkedStoi(std::string_view text)
{
    std::size_t i = 0;
    auto isSpace = [](char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
    };
    while (i < text.size() && isSpace(text[i]))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    long long value = 0;
    std::size_t digits = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, ++digits) {
        value = value * 10 + (text[i] - '0');
        if (value > static_cast<long long>(INT_MAX) + 1)
            throw std::out_of_range("stoi argument out of range");
    }
    if (digits == 0)
        throw std::invalid_argument(kInvalidStoiArgument);
    value = negative ? -value : value;
    if (value > INT_MAX || value < INT_MIN)
        throw std::out_of_range("stoi argument out of range");
    return static_cast<int>(value);
}
