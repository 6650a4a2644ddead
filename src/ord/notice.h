// Notices: one short line that the window shows for a few seconds, the name
// of a saved screenshot, what C copied, why a go-to stopped short. It stands
// at the top, under the depth read-out; a new notice replaces the old.
#pragma once

// How long a notice stays, in seconds.
constexpr double NOTICE_SECONDS = 2.0;

// Shows plain text (copied; cut at 300 bytes) for `seconds`.
void notice_show(const char *text, double seconds = NOTICE_SECONDS);
// Draws the notice, if one is due, and counts dt seconds off its time.
void notice_draw(double dt);
