#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <vector>

#include "base/ObjAppendList.h"

TEST(ObjAppendList, GrowsByTheLargerOfNeedAndIncrement) {
    std::vector<double> values(100);
    std::iota(values.begin(), values.end(), 7.5);
    for (const long increment : {-5L, 1L, 10L, 64L}) {
        vek::ObjAppendList<double> list(increment);
        EXPECT_EQ(list.data(), nullptr);
        std::vector<double> expected;
        long free = 0;
        // 0 stands for a single append.
        for (const long n : {0L, 0L, 3L, -1L, 60L, 0L, 100L, 0L, 0L}) {
            const long added = n == 0 ? 1 : std::max(n, 0L);
            free += (added > free ? std::max(added - free, increment) : 0) - added;
            n == 0 ? list.append(values[0]) : list.append(values.data(), n);
            expected.insert(expected.end(), values.begin(), values.begin() + added);
            ASSERT_EQ(list.freeSlots(), free) << increment;
            ASSERT_EQ(std::vector<double>(&list[0], &list[0] + list.count()), expected);
            ASSERT_EQ(std::count(&list[list.count()], &list[list.count() + free], 0.0), free);
        }
    }
    // A failure changes nothing.
    vek::ObjAppendList<double> list(std::numeric_limits<long>::max());
    EXPECT_THROW(list.append(1.5), std::bad_alloc);
    EXPECT_EQ(list.count() + list.freeSlots(), 0);
}

TEST(ObjAppendListP, DeletesEachObjectOnce) {
    using Object = std::shared_ptr<int>;
    const Object living = std::make_shared<int>();
    {
        vek::ObjAppendListP<Object> list;
        auto* const twice = new Object(living);
        Object* const all[] = {twice, nullptr, twice, new Object(living)};
        list.append(all, 4);
        list.removeAll();
        EXPECT_TRUE(list.count() == 0 && living.use_count() == 1);
        list.append(new Object(living));
    }
    EXPECT_EQ(living.use_count(), 1);
}
