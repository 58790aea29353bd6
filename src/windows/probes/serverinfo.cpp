// Server Info: the selected server's status answer in its own window.
#include "probes/address.h"
#include "probes/serverinfowindow.h"
#include "probes/gamequery.h"
#include "probes/gamequerychannel.h"
#include "shell/mainwindow.h"

#include <QLineEdit>

void MainWindow::showServerInfo()
{
    const ServerRec *rec = selectedServer();
    if (!rec)
        return;
    const QString address = AddressToDotted(rec->Address);
    const QString port = QString::number(rec->Port);
    serverAddressEdit_->setText(address);
    const QString answer = queries_->query(address, port, GameQuery::StatusMode);
    if (answer.isEmpty())
        return;
    auto *window = new ServerInfoWindow(GameQuery::serverInfoText(answer), this);
    window->show();
}
