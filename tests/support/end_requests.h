#pragma once

#include "app/vesk_app.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

/**
 * Ends what the program asks for and the connections that it keeps; for the end of a test, when the objects
 * that asked are gone. Where the next test's server has the same address, what was never answered would be
 * asked for again of that one, and its first request would go down a connection that is just being closed,
 * and fail or stay without an answer.
 */
inline void endRequests()
{
    QNetworkAccessManager *manager = VeskApp::instance()->networkAccessManager();
    qDeleteAll(manager->findChildren<QNetworkReply *>());
    manager->clearConnectionCache();
}
