#pragma once

class QAbstractItemView;
class QTableView;
class QWidget;

// Grids that fit what they show, and windows that keep their controls whole.
namespace QtGridFit {

// Sets every shown column that the user may size (not a stretching one) to
// the wider of its caption and its widest text among the first `rows` rows,
// but never wider than `widest` pixels. Only those rows are read, so a long
// list that reads its rows as they come into view stays quick to open.
void fitColumns(QTableView &view, int rows = 64, int widest = 320);

// A cell whose text does not fit its column shows the whole text as its
// tooltip (before the model's own tooltip, if it has one).
void showClippedText(QAbstractItemView &view);

// Keeps a window from shrinking below the size at which its controls overlap
// or its texts (its title included) are cut: the width its layout needs, and
// the height the layout needs at that width (wrapped texts take more lines
// when narrower). Call once the layout and the title are set.
void keepControlsWhole(QWidget &window);

// The least height of a grid that shows its captions and `rows` rows.
int heightForRows(const QTableView &view, int rows);

} // namespace QtGridFit
