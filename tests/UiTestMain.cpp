// Window tests need the application object before the first widget.
#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tessavo"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
