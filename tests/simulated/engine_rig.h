// The shipped engines on the simulated backend: their threads, their wake events and one empty profile, as the main
// process starts them.
#pragma once

#include "model/engine_state.h"
#include "platform/simulated/simulation.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Starts the engines in a fresh state; on return all threads wait. `hooks` false: the system refuses them.
void BeginRig(const SimOptions& options = {}, bool hooks = true);
// Shuts them down as the main process does. Returns an empty string, or what still waits.
std::string EndRig();

std::vector<UnifiedEvent> RigMacro();
void SetRigMacro(const std::vector<UnifiedEvent>& events);
bool RigCanUndo();
// The page calls a bound command with one text argument. Gives what its promise came to; a rejection begins with '!'.
std::string RigPage(const std::string& name, const std::string& argument = "");
// Raises several requests before the dispatcher gets to run.
void RigRequest(const std::vector<std::atomic<bool>*>& requests);
void SetRigTargets(const std::vector<uint32_t>& targets);
// Runs `call` while another thread holds macroMutex.
void WithMacroMutexHeld(const std::function<void()>& call);

// A folder of this test process that is removed at its end.
std::string RigFolder();

UnifiedEvent KeyEvent(double time, uint32_t virtualKey, bool down);
UnifiedEvent ButtonEvent(double time, uint32_t flags, int32_t x, int32_t y);
UnifiedEvent MoveEvent(double time, int32_t x, int32_t y);

class EngineTest : public testing::Test {
  protected:
    void SetUp() override { BeginRig(); }
    void TearDown() override { EXPECT_EQ(EndRig(), ""); }
};
