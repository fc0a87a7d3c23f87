#!/bin/sh
# Runs one harness for a while over its committed corpus and prints one line: runs,
# executions a second and coverage (libFuzzer's cov: edges, ft: features).
#   run_fuzzer.sh HARNESS SECONDS CORPUS SCRATCH [fresh]
# New inputs, crash inputs and the whole log go to SCRATCH; with "fresh" it is emptied
# first, so that the run starts from the committed corpus alone.
set -eu
harness=$1 seconds=$2 corpus=$3 scratch=$4
name=$(basename "$harness")
[ "${5:-}" = fresh ] && rm -rf "$scratch"
mkdir -p "$scratch/corpus"
log="$scratch/$name.log"
status=0
# Standard output closed: the dash's own messages would only slow the run.
"$harness" -max_total_time="$seconds" -timeout=10 -close_fd_mask=1 -print_final_stats=1 \
    -artifact_prefix="$scratch/" "$scratch/corpus" "$corpus" >"$log" 2>&1 || status=$?
done=$(grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -n 1)
if [ "$status" -ne 0 ] || [ -z "$done" ]; then
    cat "$log"
    echo "$name: FAILED (exit $status), inputs and log in $scratch"
    exit 1
fi
runs=$(echo "$done" | sed -E 's/^#([0-9]+).*/\1/')
cov=$(echo "$done" | sed -E 's/.*cov: ([0-9]+).*/\1/')
ft=$(echo "$done" | sed -E 's/.*ft: ([0-9]+).*/\1/')
corp=$(echo "$done" | sed -E 's/.*corp: ([0-9]+).*/\1/')
took=$(grep -E '^Done [0-9]+ runs in' "$log" | sed -E 's/.* in ([0-9]+) second.*/\1/')
rate=$(grep -E '^stat::average_exec_per_sec' "$log" | sed -E 's/.*: *//')
printf '%-14s %9s runs in %4ss  %6s exec/s  cov: %5s  ft: %6s  corpus: %s\n' "$name" "$runs" "$took" "$rate" "$cov" "$ft" "$corp"
