#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

/** Catches what would be opened on the desktop. */
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    UrlCatcher();
    ~UrlCatcher() override;

    QList<QUrl> urls;

public slots:
    void caught(const QUrl &url) { urls.append(url); }
};
