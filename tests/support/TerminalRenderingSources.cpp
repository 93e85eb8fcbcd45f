// The test binary links the engine only; the terminal's rendering code lives
// with the command under cli/. Its pure parts are compiled in here so that they
// can be tested without going through the executable.
#include "BigDigits.cpp"
#include "BottleArt.cpp"
#include "PanelRenderer.cpp"
#include "QuotaBarArt.cpp"
#include "TerminalStyle.cpp"
#include "TextWidth.cpp"
