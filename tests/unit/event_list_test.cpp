#include "editing/event_list.h"

#include "editing/macro_edits.h"
#include "engines/recorder.h"
#include "failing_memory.h"
#include "model/engine_state.h"
#include "test_support.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <new>
#include <thread>
#ifdef _WIN32
#include <windows.h>
#endif

namespace {

constexpr size_t kSomeParts = 3 * kEventsPerHold + 17;

class EventListTest : public DataFolderTest {
  protected:
    EventListTest() { SetMacro({}); }

    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, std::move(events)}};
        MarkMacroChanged();
    }
    static std::string ExpectedList() {
        MutexLock lock(macroMutex);
        return MacroEventsJson(macroState.profiles[0].events);
    }
    static UnifiedEvent MoveTo(int32_t x) { return {.type = EvAbsMove, .x = x, .y = 2}; }
    static std::string EventsFile() { return ReadFile(DataFilePath("macroevents.txt")); }
};

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(EventListTest, IsTheSameInOnePartAndInSeveral) {
    for (const size_t count : {size_t{0}, size_t{1}, kEventsPerHold - 1, kEventsPerHold, kEventsPerHold + 1,
                               2 * kEventsPerHold, kSomeParts}) {
        SetMacro(std::vector<UnifiedEvent>(count, MoveTo(1)));
        EXPECT_EQ(ReportEventList(), ExpectedList()) << count;
    }
}

TEST_F(EventListTest, GrowsWithTheRecording) {
    for (const size_t before : {size_t{0}, size_t{5}, kEventsPerHold, kSomeParts}) {
        SetMacro(std::vector<UnifiedEvent>(before, MoveTo(1)));
        engineState.recording = true;
        for (int32_t x = 0; x < 3; ++x) {
            UpdateEventMirror();
            EXPECT_EQ(EventsFile(), ExpectedList()) << before;
            AppendRecordedEvent(MoveTo(x));
        }
        EXPECT_EQ(ReportEventList(), ExpectedList()) << before;
        engineState.recording = false;
    }
}

TEST_F(EventListTest, CopiesOnlyTheNewEventsOfARecording) {
    SetMacro({MoveTo(1)});
    ReportEventList();
    {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events[0].x = 7;  // not marked as a change, so nobody may look at it
    }
    engineState.recording = true;
    AppendRecordedEvent(MoveTo(2));
    const std::string list = ReportEventList();
    EXPECT_TRUE(Contains(list, "X:1 Y:2")) << list;
    EXPECT_TRUE(Contains(list, "X:2 Y:2")) << list;
}

// Remembers when a file was last written.
class FileTime {
  public:
    explicit FileTime(const std::string& path) : path_(path) {
#ifdef _WIN32
        HANDLE file = Open();
        GetFileTime(file, nullptr, nullptr, &time_);
        CloseHandle(file);
#else
        time_ = std::filesystem::last_write_time(path_);
#endif
    }
    // Sets the time to that moment, or to so many seconds after it.
    void Restore(int secondsLater) {
#ifdef _WIN32
        // The library's own function drops the part below a second.
        constexpr uint64_t kUnitsPerSecond = 10'000'000;
        const uint64_t units = ((uint64_t{time_.dwHighDateTime} << 32) | time_.dwLowDateTime) +
                               kUnitsPerSecond * static_cast<uint64_t>(secondsLater);
        const FILETIME time{static_cast<DWORD>(units), static_cast<DWORD>(units >> 32)};
        HANDLE file = Open();
        EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &time));
        CloseHandle(file);
#else
        std::filesystem::last_write_time(path_, time_ + std::chrono::seconds(secondsLater));
#endif
    }

  private:
#ifdef _WIN32
    HANDLE Open() {
        return CreateFileA(path_.c_str(), FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    }
    FILETIME time_{};
#else
    std::filesystem::file_time_type time_;
#endif
    std::string path_;
};

// A byte that another program has changed in the middle shows what is written: with the old time of the file the program
// cannot know of it, and writes only the end.
TEST_F(EventListTest, WritesOnlyTheNewEndOfALongMirror) {
    const std::string path = DataFilePath("macroevents.txt");
    SetMacro(std::vector<UnifiedEvent>(kSomeParts, MoveTo(1)));
    engineState.recording = true;
    UpdateEventMirror();
    const auto scribble = [&](bool keepTime) {
        std::string text = ReadFile(path);
        text[100] = '#';
        FileTime time(path);
        WriteFile(path, text);
        time.Restore(keepTime ? 0 : 1);
    };
    scribble(true);
    AppendRecordedEvent(MoveTo(2));
    UpdateEventMirror();
    std::string expected = ExpectedList();
    expected[100] = '#';
    EXPECT_EQ(EventsFile(), expected);
    scribble(false);
    AppendRecordedEvent(MoveTo(3));
    UpdateEventMirror();
    EXPECT_EQ(EventsFile(), ExpectedList());
    WriteFile(path, "short");
    AppendRecordedEvent(MoveTo(4));
    UpdateEventMirror();
    EXPECT_EQ(EventsFile(), ExpectedList());
}

TEST_F(EventListTest, BeginsAgainAfterAnEditOfARunningRecording) {
    SetMacro(std::vector<UnifiedEvent>(kSomeParts, MoveTo(1)));
    engineState.recording = true;
    UpdateEventMirror();
    AppendRecordedEvent(MoveTo(2));
    DeleteEvent("0");
    EXPECT_EQ(EventsFile(), ExpectedList());
    UpdateEventTime("1,5");
    EXPECT_EQ(EventsFile(), ExpectedList());
    AppendRecordedEvent(MoveTo(3));
    OptimizeMacro();
    EXPECT_EQ(EventsFile(), ExpectedList());
}

TEST_F(EventListTest, FollowsARecordingAndEditsOfOtherThreads) {
    constexpr int kEvents = 20000;
    engineState.recording = true;
    std::atomic<bool> done{false};
    std::thread input([&done] {
        for (int32_t x = 0; x < kEvents; ++x) {
            AppendRecordedEvent(MoveTo(x));
        }
        done = true;
    });
    std::thread editor([&done] {
        while (!done) {
            UpdateEventTime("0,1.5");
        }
    });
    while (!done) {
        UpdateEventMirror();
    }
    input.join();
    editor.join();
    EXPECT_EQ(ReportEventList(), ExpectedList());
    EXPECT_EQ(EventsFile(), ExpectedList());
}

TEST_F(EventListTest, IsCompleteAgainAfterMemoryRanOut) {
    REQUIRE_FAILING_MEMORY();
    SetMacro(std::vector<UnifiedEvent>(100000, MoveTo(1)));
    {
        const FailingMemory failing(1000000);
        EXPECT_THROW(ReportEventList(), std::bad_alloc);
        EXPECT_THROW(UpdateEventMirror(), std::bad_alloc);
    }
    EXPECT_EQ(ReportEventList(), ExpectedList());
}
