#pragma once
#include "matcher/matchnumbers.h"

#include <QDialog>

#include <array>

class FlexGrid;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;
class Ticker;

// The Ping Matcher: the players of a loaded ping list side by side, one row per
// server with its Match Factor. Ping measures the servers from here as one more
// player. Opened modally by File, Load; each opening reads the matcher data afresh.
class frmMatch : public QDialog {
    Q_OBJECT
public:
    explicit frmMatch(QWidget *owner);

    QPushButton *cmdPing, *cmdSort, *cmdSave, *cmbCancel;
    QGroupBox *fraCalcs;
    std::array<QRadioButton *, 2> Option1;  // 0 "Hops first", 1 "Pings only"
    QLabel *Image1, *Image2, *Image3, *Image4, *lblStatus;
    FlexGrid *MSFlexGrid1;
    Ticker *Timer1, *Timer2;

    qint16 MatchBusy = 0;             // 1 while a Ping run lasts
    qint16 MatchCancelRequested = 0;  // 1 once Cancel was pressed during a run
    MatchMode matchMode = MatchMode::HopsFirst;  // of the last Option1 click

    // The outer width in twips (the designed frame counted), as the fill and the
    // resize rule see it.
    int Width() const { return widthTwips_; }
    void setWidth(int twips);

    // The fill steps, run in order F1 to F6; each caller names its own.
    enum FillStep { F1 = 1, F2 = 2, F3 = 4, F4 = 8, F5 = 16, F6 = 32 };
    void FillMatchGrid(MatchMode mode, int steps);

    void Form_Load();
    void Form_Resize();
    void cmdPing_Click();
    void cmdSort_Click();
    void Option1_Click(int index);
    void cmdSave_Click();
    void cmbCancel_Click();
    void Timer2_Timer();

public slots:
    void reject() override;  // Escape is the Cancel button

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildControls();
    void setIdleControls(bool idle);
    // Measures server s for the newest player; false when nothing is stored.
    void pingServer(qint32 s);

    int widthTwips_ = 0;
};
