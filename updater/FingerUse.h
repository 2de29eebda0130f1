#pragma once

class QAbstractItemView;
class QFileDialog;

/// What makes Qt's widgets usable with a finger on the panel's small screen.

/// Lets a finger, or a mouse with its left button, drag the rows of `view`; where they all fit nothing changes. A drag
/// presses nothing, neither a row nor a button in it. Once for each view.
void ScrollByFinger(QAbstractItemView& view);
/// Makes `dialog` as large as the screen, with rows and buttons that a finger hits. For a dialog that is not native and
/// not yet shown.
void FitForFinger(QFileDialog& dialog);
