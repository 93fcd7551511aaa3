# shellcheck shell=bash
# The files that lint and format look at. Sourced with the top folder as the current one.

cpp_files() {
    find src tests tools bench fuzz -type f \( -name '*.cpp' -o -name '*.h' \) 2>/dev/null | sort
}
shell_files() {
    {
        printf '%s\n' quilldeck .ci/run tools/build/wine-run
        find tools third_party tests bench -type f -name '*.sh' 2>/dev/null
    } | sort
}
