// sysfs GPIO pins as plain files under a temporary device root.
#include <gtest/gtest.h>

#include <string>
#include <sys/stat.h>

#include "gpio_drv.h"
#include "test_root.h"

namespace {

TEST(Gpio, SetExportsOnlyAPinThatIsNotThere)
{
    TestRoot root;
    root.Write("sys/class/gpio/export", "");
    root.Write("sys/class/gpio/gpio68/direction", "in");
    EXPECT_TRUE(gpio_set(68, 1));
    EXPECT_EQ(root.Read("sys/class/gpio/gpio68/direction"), "out");
    EXPECT_EQ(root.Read("sys/class/gpio/export"), "");
    EXPECT_TRUE(gpio_set(68, 2));
    EXPECT_EQ(root.Read("sys/class/gpio/gpio68/direction"), "in");

    // No kernel makes the pin's folder here, so the direction write fails and says so.
    EXPECT_FALSE(gpio_set(99, 0));
    EXPECT_EQ(root.Read("sys/class/gpio/export"), "99");
}

TEST(Gpio, InIsZeroWhenThePinCannotBeRead)
{
    TestRoot root;
    root.Write("sys/class/gpio/gpio70/value", "1\n");
    EXPECT_EQ(gpio_in(70), 1u);
    root.Write("sys/class/gpio/gpio70/value", "0\n");
    EXPECT_EQ(gpio_in(70), 0u);
    root.Write("sys/class/gpio/gpio70/value", "17\n");
    EXPECT_EQ(gpio_in(70), 1u);

    root.Write("sys/class/gpio/gpio71/value", "1\n");
    EXPECT_EQ(gpio_in(71), 1u);
    remove(root.Abs("sys/class/gpio/gpio71/value").c_str());
    EXPECT_EQ(gpio_in(71), 0u) << "missing";
    mkdir(root.Abs("sys/class/gpio/gpio71/value").c_str(), 0755);
    EXPECT_EQ(gpio_in(71), 0u) << "a folder";
    root.Write("sys/class/gpio/gpio69/value", "");
    EXPECT_EQ(gpio_in(69), 0u) << "empty";
    EXPECT_EQ(gpio_in(0xFFFFFFFFu), 0u);

    EXPECT_TRUE(gpio_out(70, 5));
    EXPECT_EQ(root.Read("sys/class/gpio/gpio70/value"), "1");
    EXPECT_FALSE(gpio_out(72, 1));
}

}  // namespace
