#pragma once
// Helpers for the tests that drive the dialogs and the main window's commands.
#include "probes/address.h"
#include "serverlist/refreshdecisions.h"
#include "shell/itemlist.h"
#include "shell/mainwindow.h"
#include "shell/seams.h"
#include "shell/serverrow.h"

#include <QObject>

// A control by its objectName.
template <class T>
T *child(const QObject &parent, const char *name)
{
    return parent.findChild<T *>(QLatin1String(name));
}

// A row of the main list with its record, as a refresh leaves it; the record's index.
inline int addListedServer(MainWindow &w, const char *address, int port, const QString &hostName = {},
                            bool favorite = false)
{
    ServerRec rec;
    rec.Address = DottedToAddress(QLatin1String(address));
    rec.Port = port;
    if (!hostName.isNull())
        rec.HostName = ServerRow::pad(hostName, 50);
    rec.IsFavorite = favorite;
    const int index = w.servers().appendServer(rec);
    const QString row = ServerRow::format(10 + index, favorite, QLatin1String(address), hostName, {}, {}, {});
    auto *list = w.findChild<ItemList *>(QStringLiteral("serverList_"));
    list->setRowData(list->addRow(row), index);
    return index;
}
