#include "decoder_shell.h"

#include "platform/shell_line.h"
#include "platform/sysutil.h"

namespace {

class SystemDecoderShell : public DecoderShell {
public:
    void run(const std::string& line, const StopFlag* stop) override {
        runShellLine(line.c_str(), stop);
    }
    int findDecoder() override { return check_process_exist("avworker", 0); }
    bool alive(int pid) override { return process_alive(pid); }
};

}  // namespace

DecoderShell* systemDecoderShell() {
    static SystemDecoderShell sShell;
    return &sShell;
}
