#include "KelvoControl/detail/CellLocator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Veltrani::KelvoControlDetail::AxisTable;

/// The interval by looking at one after the other.
std::size_t searched(const std::vector<double>& values, double value) {
    const bool falling = values.back() < values.front();
    std::size_t index = 0;
    while (index + 2 < values.size() && (falling ? value <= values[index + 1] : value >= values[index + 1])) {
        ++index;
    }
    return index;
}

TEST(AxisTable, FindsWhatALinearSearchFinds) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> part(0.0, 1.0);
    std::vector<std::vector<double>> series(4);
    for (int i = 0; i < 37; ++i) {
        series[0].push_back(0.1 * i - 1.7);
        series[1].push_back(2.0 - 0.3 * i);
        series[2].push_back(std::exp(0.4 * i));
        series[3].push_back(-std::exp(0.4 * i));
    }
    for (const auto& values : series) {
        const auto table = AxisTable::of(values);
        ASSERT_TRUE(table);
        for (int i = 0; i < 2000; ++i) {
            const double value = i < 37 ? values[static_cast<std::size_t>(i)]
                                        : values.front() + (values.back() - values.front()) * std::pow(part(random), 4);
            std::size_t index = 99;
            double within = -1;
            ASSERT_TRUE(table->find(value, index, within)) << value;
            ASSERT_EQ(index, searched(values, value)) << value;
            ASSERT_NEAR(values[index] + within * (values[index + 1] - values[index]), value,
                        1e-14 * std::abs(values.back()));
            ASSERT_TRUE(within >= 0 && within <= 1);
        }
    }
}

TEST(AxisTable, NothingIsFoundOutside) {
    const auto table = AxisTable::of({1.0, 2.0, 4.0});
    std::size_t index = 99;
    double part = -1;
    for (const double value : {0.999, 4.001, std::numeric_limits<double>::quiet_NaN(), -1e300, 1e300}) {
        EXPECT_FALSE(table->find(value, index, part));
    }
    EXPECT_EQ(index, 99U);
    EXPECT_EQ(table->partOf(0.5, 1), 0);
    EXPECT_EQ(table->partOf(3.0, 1), 0.5);
    EXPECT_EQ(table->partOf(5.0, 1), 1);
}

TEST(AxisTable, SeriesThatTurnOrStandStillHaveNone) {
    EXPECT_FALSE(AxisTable::of({}));
    EXPECT_FALSE(AxisTable::of({1.0}));
    EXPECT_FALSE(AxisTable::of({1.0, 1.0}));
    EXPECT_FALSE(AxisTable::of({1.0, 2.0, 1.5}));
    EXPECT_FALSE(AxisTable::of({3.0, 2.0, 2.5}));
    EXPECT_FALSE(AxisTable::of({1.0, std::numeric_limits<double>::quiet_NaN(), 2.0}));
    EXPECT_FALSE(AxisTable::of({1.0, std::numeric_limits<double>::infinity()}));
    EXPECT_FALSE(AxisTable::of({0.0, 1e-320})) << "too near to each other to count by";
}

}  // namespace
