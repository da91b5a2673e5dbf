#ifndef TESTRUNNER_H
#define TESTRUNNER_H

#include <QObject>

// One test executable per subsystem may hold several test classes: each
// registers itself, and the runner's main() runs them in turn.
namespace TestRunner {
using Factory = QObject *(*)();
bool add(Factory make);
}

#define ZU_REGISTER_TEST(Class) \
    static const bool Class##Registered = TestRunner::add([]() -> QObject * { return new Class; });

#endif // TESTRUNNER_H
