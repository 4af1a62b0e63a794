// The options of one command.
#include <algorithm>
#include <cstdio>

#include "mgrsrc/mgrsrc.h"

bool CommandLine::Has(const std::string& flag) const {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

const std::string* CommandLine::Value(const std::string& option) const {
    for (auto it = values.rbegin(); it != values.rend(); ++it)
        if (it->first == option) return &it->second;
    return nullptr;
}

int SplitArgs(const std::string& command, const char* help, const std::vector<std::string>& args,
              const std::vector<std::string>& flags, const std::vector<std::string>& valued,
              CommandLine* out) {
    auto known = [](const std::vector<std::string>& names, const std::string& a) {
        return std::find(names.begin(), names.end(), a) != names.end();
    };
    bool options = true;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!options || a.size() < 2 || a[0] != '-') {
            out->operands.push_back(a);
        } else if (a == "--") {
            options = false;
        } else if (a == "-h" || a == "--help") {
            std::fputs(help, stdout);
            return kExitOk;
        } else if (known(flags, a)) {
            out->flags.push_back(a);
        } else if (known(valued, a)) {
            if (i + 1 == args.size()) return UsageError(command, "option " + a + " needs a value");
            out->values.emplace_back(a, args[++i]);
        } else {
            return UsageError(command, "unknown option '" + a + "'");
        }
    }
    return -1;
}
