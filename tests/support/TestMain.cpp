#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifdef ORVEX_TEST_WINDOWS
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    Application application(argc, argv);
    return RUN_ALL_TESTS();
}
