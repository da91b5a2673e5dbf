#include "testrunner.h"

#include <QApplication>
#include <QScopedPointer>
#include <QTest>
#include <QVector>

static QVector<TestRunner::Factory> &factories()
{
    static QVector<TestRunner::Factory> list;
    return list;
}

bool TestRunner::add(Factory make)
{
    factories().append(make);
    return true;
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    int failures = 0;
    for (TestRunner::Factory make : factories()) {
        QScopedPointer<QObject> test(make());
        failures += QTest::qExec(test.data(), argc, argv);
    }
    return failures;
}
