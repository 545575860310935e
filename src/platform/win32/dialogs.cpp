#include "platform/dialogs.h"

#include "platform/win32/text_encoding.h"

#include <windows.h>

#include <commdlg.h>

#include <atomic>

namespace {

constexpr DWORD kPathLength = MAX_PATH;  // including the closing zero
static_assert(kPathLength == 260);

std::atomic<bool> dialogsAllowed{true};
bool dialogOpen = false;  // UI thread

// Returns names and patterns alternately, each with its closing zero, and one more zero at the end.
std::string FilterText(std::span<const FileDialogFilter> filters) {
    std::string text;
    for (const FileDialogFilter& filter : filters) {
        text.append(filter.name).push_back('\0');
        text.append(filter.pattern).push_back('\0');
    }
    return text;
}

// Puts a UTF-8 name into the dialog's buffer, which takes the system's code page. A name that is too long is left out: the
// dialog would not open with a part of it.
void PutName(const std::string& name, char (&path)[kPathLength]) {
    const std::wstring wide = WideOfUtf8(name);
    if (WideCharToMultiByte(CP_ACP, 0, wide.c_str(), -1, path, static_cast<int>(kPathLength), "_", nullptr) ==
        0) {
        path[0] = '\0';
    }
}

// NOTE: the dialog runs its own message loop, so the page keeps calling, and the end of the main loop also ends the
// dialog.
FileDialogResult ShowDialog(BOOL(WINAPI* show)(LPOPENFILENAMEA), std::span<const FileDialogFilter> filters,
                            const char* defaultExtension, DWORD flags, const std::string& proposedName) {
    if (dialogOpen || !dialogsAllowed) {
        return {};
    }
    const std::string filter = FilterText(filters);
    char path[kPathLength] = {};
    PutName(proposedName, path);
    OPENFILENAMEA request = {};
    request.lStructSize = sizeof request;
    request.lpstrFilter = filter.c_str();
    request.nFilterIndex = 1;
    request.lpstrFile = path;
    request.nMaxFile = kPathLength;
    request.lpstrDefExt = defaultExtension;
    request.Flags = flags;
    dialogOpen = true;
    const bool chosen = show(&request) != FALSE;
    dialogOpen = false;
    return chosen ? FileDialogResult{FileDialogOutcome::Chosen, path, {}} : FileDialogResult{};
}

}  // namespace

FileDialogResult AskForFileToOpen(std::span<const FileDialogFilter> filters) {
    return ShowDialog(GetOpenFileNameA, filters, nullptr, OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST, {});
}

FileDialogResult AskForFileToSave(std::span<const FileDialogFilter> filters, const char* defaultExtension,
                                  const std::string& proposedName) {
    return ShowDialog(GetSaveFileNameA, filters, defaultExtension, OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST,
                      proposedName);
}

void AllowFileDialogs(bool allowed) {
    dialogsAllowed = allowed;
}
