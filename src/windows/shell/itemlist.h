#pragma once
#include <QListWidget>

// A list whose rows carry an integer of item data, with the selected row as an
// index (-1 = none), optionally kept sorted by text without regard to case (a
// new row goes after the rows equal to it).
class ItemList : public QListWidget {
    Q_OBJECT
public:
    explicit ItemList(bool sorted, QWidget *parent = nullptr);

    int addRow(const QString &text);  // the index the new row got
    void removeRow(int row);          // leaves nothing selected
    QString rowText(int row) const;
    void setRowText(int row, const QString &text);  // keeps the row in place
    int rowData(int row) const;
    void setRowData(int row, int value);
    int selectedRow() const;
    void selectRow(int row);  // -1 selects nothing
    void selectLast();        // and scrolls it into view
    QStringList texts() const;

signals:
    // Every change of the selection (by mouse, keyboard or code), and a mouse
    // click on the row that was already selected.
    void picked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool sorted_;
    bool pressChangedSelection_ = false;
};
