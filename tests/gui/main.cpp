// The tests of the window share one application object, as a program has, and never see the user's
// own settings.
#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");  // listing the tests needs no display either
    const QApplication application(argc, argv);
    const QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    return RUN_ALL_TESTS();
}
