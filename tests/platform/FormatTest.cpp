#include "Zel/Format.h"
#include <gtest/gtest.h>
TEST(F,x){ EXPECT_EQ(Zel::_fmt("%-7u|",12U).view(),"12     |"); EXPECT_EQ(Zel::_fmt("%5s|%%%.*s", "ab",2,"abc").view(),"   ab|%ab");}
