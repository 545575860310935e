#include "imports/macro_import.h"

#include "base/json_writer.h"
#include "base/text.h"
#include "imports/page_notice.h"
#include "imports/pending_import.h"
#include "model/engine_state.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "platform/process.h"
#include "storage/data_folder.h"
#include "storage/macro_file.h"
#include "windows/main_page.h"

#include <utility>

namespace {

constexpr FileDialogFilter kMacroFilters[] = {
    {"Varnelle Macro (*.vrlmacro)", "*.vrlmacro"},
    {"All Files", "*.*"},
};
constexpr const char* kMacroExtension = "vrlmacro";

constexpr const char* kUnreadable =
    "That macro file could not be imported - it may be corrupted or from a version this build doesn't "
    "recognize. Since this is recorded work, it's worth checking the original file is intact before trying "
    "again.";

std::string ErrorDocument(std::string_view message) {
    std::string document;
    JsonWriter json(document);
    json.BeginObject();
    json.PlainTextField("outcome", "error");
    json.TextField("message", message);
    json.EndObject();
    return document;
}

bool CopyCurrentProfile(Profile* profile) {
    MutexLock lock(macroMutex);
    const Profile* current = CurrentProfile();
    if (current == nullptr) {
        return false;
    }
    *profile = *current;
    return true;
}

}  // namespace

void ExportProfile() {
    Profile profile;  // as it was at the user's request, before the dialog
    if (!CopyCurrentProfile(&profile)) {
        return;
    }
    const FileDialogResult target = AskForFileToSave(kMacroFilters, kMacroExtension);
    if (target.outcome == FileDialogOutcome::Chosen) {
        WriteMacroFile(target.path, profile);
    } else if (target.outcome == FileDialogOutcome::Unavailable) {
        AlertPage(target.problem);
    }
}

std::string ImportProfile() {
    const FileDialogResult source = AskForFileToOpen(kMacroFilters);
    switch (source.outcome) {
    case FileDialogOutcome::Chosen:
        return ImportMacroFile(source.path);
    case FileDialogOutcome::Unavailable:
        return ErrorDocument(source.problem);
    case FileDialogOutcome::Cancelled:
        break;
    }
    return R"({"outcome":"cancelled"})";
}

std::string ImportMacroFile(const std::string& path) {
    if (EndsWithNoCase(path, ".mcr")) {
        return ErrorDocument(".mcr files are no longer supported. Re-export that profile as .vrlmacro from "
                             "whatever version of Varnelle created it, then import that instead.");
    }
    ParsedMacro macro;
    if (const std::string error = ReadMacroFile(path, &macro); !error.empty()) {
        return ErrorDocument(error);
    }
    macro.name += " (Imported)";
    return OfferDocument(OfferMacro(std::move(macro)));
}

void ImportStagedMacro(const std::string& stem) {
    const std::string path = DataFilePath("themes") + kPathSeparator + stem + "." + kMacroExtension;
    if (!FileExists(path)) {
        return;
    }
    ParsedMacro macro;
    const std::string error = ReadMacroFile(path, &macro);
    RemoveFile(path);
    if (!error.empty()) {
        if (HasMainPage()) {
            AlertPage(kUnreadable);
        } else {
            SetPendingThemeAlert(kUnreadable);
        }
        return;
    }
    const OfferResult offer = OfferMacro(std::move(macro));
    if (offer.committed) {
        NotifyPageProfileImported();
    } else {
        NotifyPageMacroPending(OfferDocument(offer));
    }
}

void ImportFromCommandLine(const std::string& path) {
    ParsedMacro macro;
    if (ReadMacroFile(path, &macro).empty()) {
        OfferMacro(std::move(macro));
    } else {
        SetPendingThemeAlert(kUnreadable);
    }
}
