// Windows of this and other programs. Best effort: a failure leaves things as they are and shows nothing. UI thread
// unless said otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using WindowRef = uintptr_t;  // HWND or X11 window; 0 is none

struct TitledWindow {
    WindowRef window = 0;
    std::string title;  // at most 255 bytes
};

// The top-level window with exactly this title, 0 if there is none.
WindowRef FindWindowByTitle(const char* title);
// All top-level windows of the session that have a title, topmost first.
std::vector<TitledWindow> ListTopLevelWindows();

bool IsWindowMinimised(WindowRef window);
void RestoreWindow(WindowRef window);
// Brings a window to the front and gives it the keyboard, also from a background process.
void ForceForeground(WindowRef window);

// Keeps a window above all ordinary ones, or no longer. Its place and size stay; 0 is skipped.
void SetWindowOnTop(WindowRef window, bool onTop);

// The program's big and small icon on a window.
void SetWindowIcons(WindowRef window);

// A message with one button, or standard error where there is no native message box. Returns when it was read.
void ShowErrorMessage(const std::string& title, const std::string& text);

// Any thread. The process that owns the top-level window at a point of the screen; false if there is none or it
// cannot be told.
bool ProcessAtPoint(int32_t x, int32_t y, uint32_t* processId);
