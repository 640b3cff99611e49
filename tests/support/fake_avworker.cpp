// Stand-in decoder: writes its arguments, NUL-terminated, to "avworker.args"
// in its working folder, then waits to be killed as the real one does.
#include <fcntl.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char* argv[]) {
    int fd = open("avworker.args.tmp", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0) return 1;
    for (int i = 1; i < argc; i++) {
        if (write(fd, argv[i], strlen(argv[i]) + 1) < 0) return 1;
    }
    close(fd);
    rename("avworker.args.tmp", "avworker.args");
    for (;;) pause();
}
