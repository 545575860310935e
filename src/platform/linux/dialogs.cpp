#include "platform/dialogs.h"

#include "platform/files.h"
#include "platform/linux/dialog_helper.h"
#include "platform/linux/dialog_portal.h"

#include <utility>

namespace {

bool dialogOpen = false;  // UI thread

// Tries the desktop's own dialog first: it fits the desktop and respects its permissions. Then the small program that most
// desktops without a portal have.
FileDialogResult Ask(const DialogRequest& request) {
    FileDialogResult result;
    if (!AskByPortal(request, &result) && !AskByHelper(request, &result)) {
        result.outcome = FileDialogOutcome::Unavailable;
        result.problem = "Varnelle cannot ask for a file because this desktop offers no file dialog; install "
                         "the package zenity, or "
                         "xdg-desktop-portal with its part for your desktop, and try again.";
    }
    return result;
}

bool HasExtension(const std::string& path) {
    return path.find('.', path.rfind('/') + 1) != std::string::npos;
}

// NOTE: neither dialog adds an extension, so neither has asked whether to replace the file with that extension.
// HACK: if that file exists, the dialog opens again with its name and asks.
FileDialogResult AskWhereToSave(DialogRequest request, const char* defaultExtension) {
    for (;;) {
        FileDialogResult result = Ask(request);
        if (result.outcome != FileDialogOutcome::Chosen || HasExtension(result.path)) {
            return result;
        }
        result.path += '.';
        result.path += defaultExtension;
        if (!FileExists(result.path)) {
            return result;
        }
        request.proposed = std::move(result.path);
        request.title = "Save As - this file exists already";
    }
}

// Rejected while another dialog is open and once the program ends.
template <typename Show> FileDialogResult AskAlone(Show show) {
    if (dialogOpen || !FileDialogsAllowed()) {
        return {};
    }
    dialogOpen = true;
    struct Closing {
        ~Closing() { dialogOpen = false; }
    } closing;
    return show();
}

}  // namespace

FileDialogResult AskForFileToOpen(std::span<const FileDialogFilter> filters) {
    return AskAlone([&] { return Ask({false, filters, "Open", {}}); });
}

FileDialogResult AskForFileToSave(std::span<const FileDialogFilter> filters, const char* defaultExtension,
                                  const std::string& proposedName) {
    return AskAlone([&] {
        return AskWhereToSave({true, filters, "Save As", proposedName}, defaultExtension);
    });
}
