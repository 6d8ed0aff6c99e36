#include "KUVStringsMath.h"

#include <gtest/gtest.h>

TEST(List, AnswersNullOutsideItsRange)
{
    list<double> empty;
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_EQ(empty[0], nullptr);
    double value = 1.0;
    list<double> one;
    one.Append(&value);
    EXPECT_EQ(one[0], &value);
    EXPECT_EQ(one[1], nullptr);
    EXPECT_EQ(one[-1], nullptr);
}

TEST(List, AnEntryMayBeAbsent)
{
    double value = 1.0;
    list<double> entries;
    entries.Append(&value);
    entries.Append(nullptr);
    EXPECT_EQ(entries.Count(), 2);
    EXPECT_EQ(entries[1], nullptr);
}

TEST(List, EntriesAreReplacedAndDroppedWithinTheRangeOnly)
{
    double a = 1.0;
    double b = 2.0;
    list<double> entries;
    entries.Reserve(2);
    entries.Reserve(-1);
    entries.Append(&a);
    entries.Append(&a);
    entries.Replace(1, &b);
    entries.Replace(2, &b);
    entries.Replace(-1, &b);
    EXPECT_EQ(entries[0], &a);
    EXPECT_EQ(entries[1], &b);
    entries.Truncate(5);
    entries.Truncate(-1);
    EXPECT_EQ(entries.Count(), 2);
    entries.Truncate(1);
    EXPECT_EQ(entries.Count(), 1);
    entries.Empty();
    EXPECT_EQ(entries.Count(), 0);
}

TEST(List, NumbersAreReadThroughPointersThatAreNullWhenAbsent)
{
    list<int> numbers = {4, 5};
    numbers.AppendAbsent();
    numbers.Append(6);
    ASSERT_EQ(numbers.Count(), 4);
    EXPECT_EQ(*numbers[0], 4);
    EXPECT_EQ(*numbers[1], 5);
    EXPECT_EQ(numbers[2], nullptr);
    EXPECT_EQ(*numbers[3], 6);
    EXPECT_EQ(numbers[4], nullptr);
    EXPECT_EQ(numbers[-1], nullptr);
    numbers.Empty();
    EXPECT_EQ(numbers.Count(), 0);
}

TEST(KUVMath, PointsAndDirectionsStartAtZero)
{
    EXPECT_EQ(KUVMathPoint2Df().x, 0.0f);
    EXPECT_EQ(KUVMathPoint2Df().y, 0.0f);
    const KUVMathPointf point;
    EXPECT_EQ(point.x, 0.0f);
    EXPECT_EQ(point.y, 0.0f);
    EXPECT_EQ(point.z, 0.0f);
    const KUVMathPoint2Df plane(1.0f, 2.0f);
    const KUVMathPoint2Df copy = plane;
    EXPECT_EQ(copy.x, 1.0f);
    EXPECT_EQ(copy.y, 2.0f);
}

TEST(KUVMath, ADoubleDirectionIsConvertedToSinglePrecision)
{
    const KUVMathDirectionf direction(KUVMathDirection(0.1, -2.0, 3.5));
    EXPECT_EQ(direction.x, 0.1f);
    EXPECT_EQ(direction.y, -2.0f);
    EXPECT_EQ(direction.z, 3.5f);
}
