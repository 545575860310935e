// Windows of this and other programs. A function that fails changes nothing and shows nothing. UI thread unless a
// function says otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using WindowRef = uintptr_t;  // HWND or X11 window; 0 is none

struct TitledWindow {
    WindowRef window = 0;
    std::string title;  // at most 255 bytes
};

// Returns the top-level window with exactly this title, 0 if there is none.
WindowRef FindWindowByTitle(const char* title);
// Returns all top-level windows of the session that have a title, topmost first.
std::vector<TitledWindow> ListTopLevelWindows();

bool IsWindowMinimised(WindowRef window);
void RestoreWindow(WindowRef window);
// Brings a window to the front and gives it the keyboard, also from a background process.
void ForceForeground(WindowRef window);

// Keeps a window above all ordinary ones, or stops doing so. Position and size stay. Ignores 0.
void SetWindowOnTop(WindowRef window, bool onTop);

// Sets the program's big and small icon on a window.
void SetWindowIcons(WindowRef window);

// Shows a message with one button, or prints it to standard error where there is no native message box. Returns when
// the user has closed it.
void ShowErrorMessage(const std::string& title, const std::string& text);

// Any thread. Reads the process that owns the top-level window at a point of the screen. Returns false if there is no
// window or its process is unknown.
bool ProcessAtPoint(int32_t x, int32_t y, uint32_t* processId);
