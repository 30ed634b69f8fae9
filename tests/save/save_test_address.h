#pragma once

#include <QString>

/** Where the test program's camera listens. Each program has an address of its own, as several run at once.
 */
inline QString saveTestAddress()
{
    bool given = false;
    const int host = qEnvironmentVariableIntValue("VESK_SAVE_TEST_HOST", &given);
    return QStringLiteral("127.0.3.%1").arg(given ? host : 10);
}
