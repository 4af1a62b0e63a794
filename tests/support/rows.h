// Tables of calls: each Row holds what a call gave and what it should give, numbers or texts,
// so that a run of one-value checks reads as one table. The rows are evaluated in order, so a
// row may read what the rows before it did. A failure names the row by its index.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>

namespace mgtest {

struct Row {
    std::string got, want;
    Row(int64_t g, int64_t w) : got(std::to_string(g)), want(std::to_string(w)) {}
    Row(std::string g, std::string w) : got(std::move(g)), want(std::move(w)) {}
};

inline void ExpectRows(std::initializer_list<Row> rows) {
    int index = 0;
    for (const Row& r : rows) {
        EXPECT_EQ(r.got, r.want) << "row " << index;
        ++index;
    }
}

}  // namespace mgtest
