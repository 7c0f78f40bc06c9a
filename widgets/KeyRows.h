// Looking a key up in a constexpr table whose rows have a `key`.
//
// Errors:  no row: null.
// Threads: any.
#pragma once

#include <cstddef>

template <typename Row, size_t count> constexpr const Row* FindKeyRow(const Row (&rows)[count], unsigned long key)
{
    for (const Row& row : rows) {
        if (row.key == key) {
            return &row;
        }
    }
    return nullptr;
}

template <typename Row, size_t count> constexpr bool KeysAreUnique(const Row (&rows)[count])
{
    for (const Row& row : rows) {
        if (FindKeyRow(rows, row.key) != &row) {
            return false;
        }
    }
    return true;
}
