#include "engines/editor_notice.h"

std::atomic<void (*)(bool wait)> editorBusyNotice{nullptr};

void NotifyEditorBusy(bool wait) {
    if (auto notice = editorBusyNotice.load()) {
        notice(wait);
    }
}
