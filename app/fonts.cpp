#include "app/fonts.h"

#include "app/vesk_app.h"

#include <QDebug>
#include <QFont>
#include <QFontDatabase>

static constexpr int FontPointSize = 9;

static void setTextFont(VeskApp &app)
{
    const int id = QFontDatabase::addApplicationFont(QStringLiteral(":/Inter-Regular.ttf"));
    if (id < 0)
        qWarning() << "error adding Inter-Regular.ttf from resource";
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (!families.isEmpty()) {
        app.setFont(QFont(families.first(), FontPointSize, -1, false));
        return;
    }
    const QString family = QStringLiteral("Inter");
    const QFont font = QFontDatabase::font(family, QString(), FontPointSize);
    app.setFont(font);
    if (font.family() != family)
        qWarning() << "Inter Regular font not installed. Using" << font.family();
}

void initFonts(VeskApp &app)
{
    qDebug() << Q_FUNC_INFO;
    setTextFont(app);
    if (QFontDatabase::addApplicationFont(QStringLiteral(":/remixicon.ttf")) >= 0)
        return;
    qWarning() << "error adding remixicon.ttf from resource";
    if (!QFontDatabase::families().contains(QLatin1StringView("remixicon")))
        qCritical() << "remixicon font not installed";
}
