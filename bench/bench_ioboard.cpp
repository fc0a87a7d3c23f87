// The I/O board's stream: one batch as a read from the port brings it, parsed and handled
// sentence by sentence, as the board's thread does for every batch. For instructions per
// batch: valgrind --tool=callgrind motordash-bench --benchmark_filter=BM_IoboardStreamBatch
// and divide the cost of _streamPass by its calls over 13.
#include <benchmark/benchmark.h>

#include <string>

#include "ioboard_drv.h"

namespace {

std::string _sentence(const std::string& body)
{
    unsigned sum = '*';
    for (unsigned char c : body) sum += c;
    char tail[8];
    snprintf(tail, sizeof(tail), "*%02X\r", sum & 0xFF);
    return body + tail;
}

// Every kind of the third connector's stream mode once.
const char* const MODE_TWO_SET[] = {
    "$L,00,00", "$O,00,00", "$I,0100,0200,0300,0400,0500,0600,0700,0800,0900",
    "$J,0100,0200,0300,0400,0500,0600,0700,0800,0900", "$k,0010,1000,0020,0000,0AF0",
    "$n,0010,1000,0020,0000,0AF0", "$e,00,00,00,00,FF", "$d,00,00,00,00", "$S,0100,0200,0300,0400,04B0,1000",
    "$R,0100,0200,0300,0400", "$G,0001,C,0002,O,0003,C", "$H,0004,C", "$P,0064"};

void BM_IoboardStreamBatch(benchmark::State& state)
{
    ioboard_test_reset();
    ioboard_set_adc_mux_config(3, 1, 0);  // one resistance input
    ioboard_test_start_stream(2);
    std::string batch;
    for (const char* body : MODE_TWO_SET) batch += _sentence(body);
    const U8* bytes = reinterpret_cast<const U8*>(batch.data());
    for (auto _ : state) {
        ioboard_test_feed(bytes, (U32)batch.size());
        for (size_t i = 0; i < sizeof(MODE_TWO_SET) / sizeof(MODE_TWO_SET[0]); i++) ioboard_test_stream_pass();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)batch.size());
    ioboard_test_reset();
}
BENCHMARK(BM_IoboardStreamBatch);

}  // namespace
