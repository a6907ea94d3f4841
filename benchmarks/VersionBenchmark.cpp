// SPDX-License-Identifier: MIT
// The start of the client, as every use in a script pays it.

#include "TableRow.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace {

/// Runs a program to its end, its output thrown away.
TableRow::Work process(const char *program, const char *argument)
{
    return [program, argument] {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        char *const arguments[] = {const_cast<char *>(program), const_cast<char *>(argument), nullptr};
        pid_t pid = 0;
        int status = -1;
        if (posix_spawn(&pid, program, &actions, nullptr, arguments, environ) != 0 || waitpid(pid, &status, 0) != pid ||
            status != 0) {
            std::fprintf(stderr, "%s failed\n", program);
            std::exit(1);
        }
        posix_spawn_file_actions_destroy(&actions);
    };
}

} // namespace

int main(int argc, char **argv)
{
    TableRow row("`nimbrelle --version`", "a Qt Core program that prints", {Aim::TimesAtMost, 1.3});
    row.addCase("nimbrelle --version", process(NIMBRELLE_CLIENT_PROGRAM, "--version"),
                process(NIMBRELLE_PLAIN_QT_PROGRAM, "--version"));
    return measureRows(argc, argv, {&row});
}
