// Whole runs of the packager in a child process: the memory manager starts once per process,
// and a fault or a failed run must not spoil the next one. The child is this program again,
// running only the DISABLED_ test of child_run.cpp, with its orders in a file (a command line
// can be longer than a Windows environment variable).
#pragma once

#include "support/run_tool.h"

constexpr const char* kChildOrders = "MXSB_PACKAGER_CHILD";

struct ChildRun {
    int status = -1;       // -1: the child didn't end by itself
    std::string text;      // the debug print's text, when switched on
    bool reached = false;  // whether the run came as far as the fault
};

// Runs the packager on `args` with `fault` armed just before ("read", "seek", "alloc:N",
// "write:N", "inplace:N": the Nth write fails where no new file can be made); with `debug`, DPrintf
// switched on and its text kept.
inline ChildRun RunInChild(const std::vector<std::string>& args, const std::string& fault = "",
                           bool debug = false) {
    TempDir scratch;
    const std::filesystem::path orders = scratch.path / "orders";
    {
        std::ofstream out(orders, std::ios::binary);
        out << (debug ? "1" : "0") << '\x1F' << fault << '\x1F' << scratch.path.string();
        for (const auto& a : args) out << '\x1F' << a;
    }
    ChildRun c;
    const int64_t child =
        StartTestChild("PackagerChild.DISABLED_Run", kChildOrders + ("=" + orders.string()));
    if (child == 0) return c;
    c.status = plat::WaitChild(child, 20000);
    c.text = SlurpFile(scratch.path / "text");
    c.reached = SlurpFile(scratch.path / "reached") == "y";
    return c;
}
