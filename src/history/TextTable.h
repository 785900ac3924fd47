#pragma once

#include <QList>
#include <QStringList>

// A table of texts under column captions: what the History screen shows in
// a grid, exports to CSV and prints.
struct TextTable
{
    QStringList columns;
    QList<QStringList> rows;
    // Rows to mark (the tint of the review screen), with why.
    QList<QString> notes; // empty or one per row; "" for an unmarked row
};
