#include "imports/macro_import.h"

#include "base/json_writer.h"
#include "base/text.h"
#include "imports/last_import.h"
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

ImportProblem ProblemOfError(const std::string& path, const std::string& error) {
    if (error == kMacroFileTooLarge) {
        return ImportProblem::TooLarge;
    }
    if (error == kMacroFileNotOpened) {
        return FileExists(path) ? ImportProblem::Unreadable : ImportProblem::NotFound;
    }
    return ImportProblem::NoName;
}

// Reads a macro file, and remembers a failure. Returns an empty string, or the sentence for the user.
std::string ReadImportedFile(const std::string& path, ParsedMacro* macro) {
    std::string error = ReadMacroFile(path, macro);
    if (!error.empty()) {
        NoteImportFailed(path, ProblemOfError(path, error));
    }
    return error;
}

// Returns a file name for a profile: its name, without what a system does not allow in one.
std::string ProposedFileName(const std::string& profileName) {
    constexpr size_t kLongestName = 100;  // bytes
    constexpr std::string_view kForbidden = "<>:\"/\\|?*";
    std::string name;
    for (const char c : profileName) {
        const bool isAllowed =
            static_cast<unsigned char>(c) >= 0x20 && kForbidden.find(c) == std::string_view::npos;
        name += isAllowed ? c : '_';
    }
    if (name.size() > kLongestName) {
        size_t end = kLongestName;
        while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
            --end;  // not inside a UTF-8 sequence
        }
        name.resize(end);
    }
    name.erase(name.find_last_not_of(" .") + 1);
    return (name.empty() ? "Macro" : name) + "." + kMacroExtension;
}

std::string ExportDocument(const char* outcome, std::string_view file, std::string_view message) {
    std::string document;
    JsonWriter json(document);
    json.BeginObject();
    json.PlainTextField("outcome", outcome);
    json.TextField("file", file);
    json.TextField("message", message);
    json.EndObject();
    return document;
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

std::string ExportMacro() {
    Profile profile;  // as it was at the user's request, before the dialog
    if (!CopyCurrentProfile(&profile)) {
        return ExportDocument("cancelled", {}, {});
    }
    const FileDialogResult target =
        AskForFileToSave(kMacroFilters, kMacroExtension, ProposedFileName(profile.name));
    switch (target.outcome) {
    case FileDialogOutcome::Chosen:
        if (TryWriteMacroFile(target.path, profile)) {
            return ExportDocument("written", FileNameOf(target.path), {});
        }
        return ExportDocument("failed", FileNameOf(target.path), "The file could not be written.");
    case FileDialogOutcome::Unavailable:
        return ExportDocument("unavailable", {}, target.problem);
    case FileDialogOutcome::Cancelled:
        break;
    }
    return ExportDocument("cancelled", {}, {});
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
        NoteImportFailed(path, ImportProblem::OldFormat);
        return ErrorDocument(".mcr files are no longer supported. Re-export that profile as .vrlmacro from "
                             "whatever version of Varnelle created it, then import that instead.");
    }
    ParsedMacro macro;
    if (const std::string error = ReadImportedFile(path, &macro); !error.empty()) {
        return ErrorDocument(error);
    }
    macro.name += " (Imported)";
    return OfferDocument(OfferMacro(std::move(macro), path));
}

void ImportStagedMacro(const std::string& stem) {
    const std::string path = DataFilePath("themes") + kPathSeparator + stem + "." + kMacroExtension;
    if (!FileExists(path)) {
        return;
    }
    ParsedMacro macro;
    const std::string error = ReadImportedFile(path, &macro);
    RemoveFile(path);
    if (!error.empty()) {
        if (HasMainPage()) {
            AlertPage(kUnreadable);
        } else {
            SetPendingThemeAlert(kUnreadable);
        }
        return;
    }
    const OfferResult offer = OfferMacro(std::move(macro), path);
    if (offer.committed) {
        NotifyPageProfileImported();
    } else {
        NotifyPageMacroPending(OfferDocument(offer));
    }
}

void ImportFromCommandLine(const std::string& path) {
    ParsedMacro macro;
    if (ReadImportedFile(path, &macro).empty()) {
        OfferMacro(std::move(macro), path);
    } else {
        SetPendingThemeAlert(kUnreadable);
    }
}
