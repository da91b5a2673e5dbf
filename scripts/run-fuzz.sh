#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer, under AddressSanitizer
# and UndefinedBehaviorSanitizer, in build-fuzz and runs each for SECONDS
# (default 60); fails when a target finds an input that crashes it or fails
# one of its checks.
#   scripts/run-fuzz.sh [SECONDS]
# The seed corpora in fuzz/corpus/ are only read: the inputs a run adds go
# to build-fuzz/corpus/TARGET, where the next run starts from them, and a
# finding to build-fuzz/findings/TARGET/ beside the run's log. Where clang
# cannot be installed, the targets are built as plain programs in
# build-fuzz-replay and replay the seed corpora instead.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
targets=(projectfile vocabulary programname highlight compilermessage)

scripts/install-deps.sh
# libclang-rt-dev brings the libFuzzer runtime of Debian's clang.
if ! scripts/install-deps.sh clang libclang-rt-dev || ! command -v clang++ > /dev/null; then
    echo "clang is missing: replaying the seed corpora instead"
    build=build-fuzz-replay
    cmake -S . -B "$build"
    cmake --build "$build" -j"$(nproc)" --target "${targets[@]/#/fuzz_}"
    cd "$build"
    QT_QPA_PLATFORM=offscreen ctest -R '^fuzz_' --output-on-failure
    exit
fi

build=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -DZU_FUZZ=ON
cmake --build "$build" -j"$(nproc)" --target "${targets[@]/#/fuzz_}"

export QT_QPA_PLATFORM=offscreen
export UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
failed=()
for target in "${targets[@]}"; do
    corpus="$build/corpus/$target"
    findings="$build/findings/$target"
    log="$build/findings/$target.log"
    mkdir -p "$corpus" "$findings"
    options=(-max_total_time="$seconds" -timeout=25 -print_final_stats=1 -artifact_prefix="$findings/")
    [ -f "fuzz/$target.dict" ] && options+=(-dict="fuzz/$target.dict")
    echo "== fuzz $target: $seconds s"
    if "$build/fuzz/fuzz_$target" "${options[@]}" "$corpus" "fuzz/corpus/$target" > "$log" 2>&1; then
        grep -E '^(Done|stat::number_of_executed_units|stat::average_exec_per_sec)' "$log"
    else
        # The report of the finding and the file that holds its input.
        tail -n 60 "$log"
        failed+=("$target")
    fi
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "== fuzz findings in: ${failed[*]} (inputs in $build/findings/)"
    exit 1
fi
echo "== fuzz: no finding"
