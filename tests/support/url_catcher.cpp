#include "tests/support/url_catcher.h"

#include <QDesktopServices>

UrlCatcher::UrlCatcher()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "caught");
}

UrlCatcher::~UrlCatcher()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}
