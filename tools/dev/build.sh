# shellcheck shell=bash
# Builds, formatting, static checks, packages. Sourced by ./dev.

# Configures a preset once and builds the named targets of it.
BuildPreset() {
    local preset=$1
    shift
    mkdir -p build
    if [ ! -f "build/$preset/build.ninja" ]; then
        cmake --preset "$preset" >"build/$preset-configure.log" 2>&1 || {
            tail -n 30 "build/$preset-configure.log" >&2
            return 1
        }
    fi
    # The whole output matters only when it fails.
    if ! ninja -C "build/$preset" "$@" >"build/$preset-build.log" 2>&1; then
        grep -aE 'error|FAILED|undefined' "build/$preset-build.log" | head -n 40 >&2
        tail -n 20 "build/$preset-build.log" >&2
        return 1
    fi
}

BuildLinux() {
    BuildPreset linux dist
    echo "Built: build/linux/dist"
}

BuildWindows() {
    BuildPreset windows dist
    echo "Built: build/windows/dist"
}

OwnCppFiles() {
    git ls-files -co --exclude-standard 'src/*.cpp' 'src/*.h' 'tests/*.cpp' 'tests/*.h' 'bench/*.cpp' 'bench/*.h' \
        'tools/*.cpp' 'tools/*.h'
}

OwnPageFiles() {
    git ls-files -co --exclude-standard 'ui/*.ts' 'ui/*.tsx' 'ui/*.css' 'ui/*.mjs' 'tests/*.mjs' 'tests/*.ts' 'tools/*.mjs'
}

Format() {
    OwnCppFiles | xargs -r clang-format -i
    OwnPageFiles | xargs -r npx prettier --log-level warn --write
}

# A test compares the outcome with the sources.
Docs() {
    BuildPreset linux print_commands
    build/linux/print_commands >build/commands.md
    mv build/commands.md docs/commands.md
    echo "Written: docs/commands.md"
}

# Check [quick]: prints a line for each check and fails at the end, so that one run shows everything. "quick" leaves out
# what takes longer than seconds.
Check() {
    local failed=0
    CheckStep() {
        local name=$1
        shift
        mkdir -p build/check
        if "$@" >"build/check/$name.log" 2>&1; then
            echo "check $name: ok"
        else
            echo "check $name: FAILED"
            tail -n 30 "build/check/$name.log"
            failed=$((failed + 1))
        fi
        checks=$((checks + 1))
    }
    checks=0
    CheckStep layers node tools/check_layers.mjs
    CheckStep language node tools/check_language.mjs
    CheckStep clang-format bash -c "$(declare -f OwnCppFiles); OwnCppFiles | xargs -r clang-format --dry-run -Werror"
    CheckStep prettier bash -c "$(declare -f OwnPageFiles); OwnPageFiles | xargs -r npx prettier --check"
    if [ "${1:-}" != quick ]; then
        SlowChecks
    fi
    echo "check: $((checks - failed)) passed, $failed failed"
    [ "$failed" = 0 ]
}

SlowChecks() {
    CheckStep tsc npx tsc --noEmit -p ui
    CheckStep eslint npx eslint ui tests tools
    CheckStep shellcheck bash -c 'git ls-files -co --exclude-standard "*.sh" dev .ci/run | xargs -r shellcheck -x -e SC1091,SC2317'
    CheckStep clang-tidy ClangTidy
}

# Static analysis takes seconds a file, so that a file is analysed again only when it, a header that it includes or the
# settings change. The stamps of files that passed are beside the compiler's cache, where every clone finds them.
ClangTidy() {
    # The analysis needs the compile commands only.
    BuildPreset linux-asan build.ninja
    local stamps=${XDG_CACHE_HOME:-$HOME/.cache}/varnelle/tidy
    mkdir -p "$stamps"
    find "$stamps" -type f -mtime +30 -delete
    local version entry list=()
    version=$(clang-tidy --version)
    while read -r entry; do
        if [ -f "$stamps/${entry#*:}" ]; then
            touch "$stamps/${entry#*:}"
        else
            list+=("$entry")
        fi
    done < <(git ls-files -co --exclude-standard 'src/*.cpp' ':!src/platform/win32' ':!src/platform/simulated' |
        xargs node tools/dev/tidy_stamps.mjs "$version")
    echo "${#list[@]} files to analyse"
    # shellcheck disable=SC2016
    printf '%s\n' "${list[@]}" | stamps=$stamps xargs -r -P 2 -I{} bash -c '
        entry={}; file=${entry%%:*}
        if clang-tidy --quiet -p build/linux-asan "$file" 2>/dev/null; then
            touch "$stamps/${entry#*:}"
        else
            echo "tidy: $file"
            exit 1
        fi'
}

Package() {
    BuildLinux
    BuildWindows
    rm -rf build/packages
    mkdir -p build/packages
    tar -C build/linux -czf build/packages/varnelle-linux-x64.tar.gz --transform 's,^dist,varnelle,' dist
    # The archive holds one folder with the program's name, as the other one does.
    cp -r build/windows/dist build/packages/varnelle
    (cd build/packages && cmake -E tar cf varnelle-windows-x64.zip --format=zip varnelle && rm -r varnelle)
    ls -l build/packages
}
