#include <gtest/gtest.h>

#include <support/audit.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    installAudit();
    return RUN_ALL_TESTS();
}
