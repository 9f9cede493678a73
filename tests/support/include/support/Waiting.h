#pragma once

#include <QtTest>

// QtTest waits five seconds for what is tried for, which a busy machine may need. Only a defect
// takes all of a minute.
#undef QTRY_VERIFY
#undef QTRY_COMPARE
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 60000)
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 60000)
