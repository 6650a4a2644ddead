// A test mode: where the frame put its texts, written to a file.
//
// With the environment variable ORDLINE_LAYOUT_FILE set to a path, every
// frame replaces that file (by a rename, so a reader never sees half of it)
// with one line per box of text_boxes, in placing order:
//   KIND X0 Y0 X1 Y1 RAW
// KIND is label, readout, legend, panel or status; the box in window pixels
// (X1, Y1 just past it); RAW 1 when the text held raw markup. A first line
// "window W H" gives the window's size. Without the variable nothing is
// written; the variable is read once.
#pragma once

// Writes the report of this frame, if the test mode is on.
void layout_report_write();
