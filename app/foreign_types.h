#pragma once

#include <QStringListModel>
#include <QtQmlIntegration>

/** Tells the views of a library's class that properties of their objects have. */
struct StringListModelForQml {
    Q_GADGET
    QML_FOREIGN(QStringListModel)
    QML_ANONYMOUS
};
