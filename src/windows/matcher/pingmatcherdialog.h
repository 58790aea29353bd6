#pragma once
#include "matcher/matchnumbers.h"
#include "shell/serverrow.h"

#include <QDialog>

struct MatcherData;
class MatchGrid;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class Ticker;

// The Ping Matcher: the players of a loaded ping list side by side, one row per
// server with its Match Factor. Ping measures the servers from here as one more
// player, added to `data`. Opened modally by File, Load; each opening reads the
// matcher data afresh.
class PingMatcherDialog : public QDialog {
    Q_OBJECT
public:
    // `fast`: Ping measures every server at once (Options, Fast Refresh).
    PingMatcherDialog(MatcherData &data, QWidget *owner, bool fast = false);

    // The outer width in twips (the designed frame counted), as the fill and the
    // resize rule see it.
    int widthTwips() const { return widthTwips_; }
    void setWidthTwips(int twips);
    // A Ping run is going.
    bool isPinging() const { return matchBusy_; }

public slots:
    void reject() override;  // Escape is the Cancel button

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // The steps of filling the grid, run in this order; each caller names its own.
    enum FillStep {
        ListOrder = 1,      // rows back in list order
        Layout = 2,         // sizes, column widths and the fixed headers
        ServerNames = 4,    // column 0 and the hidden list positions
        PlayerCells = 8,    // the player headers and their cells
        MatchFactors = 16,
        HidePositions = 32,
    };
    void fillGrid(MatchMode mode, int steps);
    void buildControls();
    void fitGridToWidth();
    void pingServers();
    // Measures server s for the newest player; nothing is stored when it did not answer.
    void pingServer(qint32 s);
    // Measures every server at once: the engine's pings, then the hop finder.
    void pingAllAtOnce();
    // Writes server s's cell and the newest player's record.
    void storeMeasurement(qint32 s, qint32 hops, double average);
    void sortByMatchFactor();
    void showMode(MatchMode mode);
    void saveToFile();
    void cancelOrClose();
    void alternateBusyPictures();
    void setIdleControls(bool idle);
    ServerRec recordOf(qint32 p, qint32 s) const;

    MatcherData &data_;
    bool matchBusy_ = false;
    bool cancelRequested_ = false;
    bool fast_ = false;
    MatchMode matchMode_ = MatchMode::HopsFirst;  // of the last mode click
    int widthTwips_ = 0;

    QPushButton *pingButton_, *sortButton_, *saveButton_, *cancelButton_;
    QGroupBox *calcsFrame_;
    QRadioButton *hopsFirstOption_, *pingsOnlyOption_;
    // The busy pictures: this machine, the server, and a heart beat tall and low.
    QLabel *hostPicture_, *serverPicture_, *beatTallPicture_, *beatLowPicture_;
    QLabel *statusLabel_;
    MatchGrid *matchGrid_;
    Ticker *busyTicker_;
};
