#include "platform/simulated/dialogs.h"

#include "platform/dialogs.h"

#include <deque>
#include <utility>

namespace {

struct DialogState {
    std::deque<FileDialogResult> answers;
    std::vector<SimDialog> shown;
    std::function<void()> onDialog;
    bool open = false;
    bool allowed = true;
};

DialogState state;

FileDialogResult Show(SimDialog dialog, std::span<const FileDialogFilter> filters) {
    if (state.open || !state.allowed) {
        return {};
    }
    for (const FileDialogFilter& filter : filters) {
        dialog.filters.push_back(std::string(filter.name) + "|" + filter.pattern);
    }
    state.shown.push_back(std::move(dialog));
    state.open = true;
    if (state.onDialog) {
        state.onDialog();
    }
    state.open = false;
    if (state.answers.empty() || !state.allowed) {
        return {};
    }
    FileDialogResult answer = std::move(state.answers.front());
    state.answers.pop_front();
    return answer;
}

}  // namespace

FileDialogResult AskForFileToOpen(std::span<const FileDialogFilter> filters) {
    return Show({}, filters);
}

FileDialogResult AskForFileToSave(std::span<const FileDialogFilter> filters, const char* defaultExtension,
                                  const std::string& proposedName) {
    return Show(
        {.save = true, .defaultExtension = defaultExtension, .proposedName = proposedName, .filters = {}},
        filters);
}

void AllowFileDialogs(bool allowed) {
    state.allowed = allowed;
}

void SimAnswerDialog(FileDialogResult answer) {
    state.answers.push_back(std::move(answer));
}

const std::vector<SimDialog>& SimShownDialogs() {
    return state.shown;
}

void SimOnDialog(std::function<void()> call) {
    state.onDialog = std::move(call);
}

void SimResetDialogs() {
    state = DialogState();
}
