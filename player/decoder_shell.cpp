#include "decoder_shell.h"

#include "platform/shell_line.h"
#include "platform/sysutil.h"

namespace {

class SystemDecoderShell : public DecoderShell {
public:
    void run(const std::string& line, long limitMs) override { runShellLine(line.c_str(), nullptr, limitMs); }
    std::vector<int> decoders() override { return find_processes("avworker"); }
    bool alive(int pid) override { return process_alive(pid); }
};

}  // namespace

DecoderShell* systemDecoderShell() {
    static SystemDecoderShell sShell;
    return &sShell;
}
