#pragma once
// The serial ports "/dev/ttySP0" to "/dev/ttySP3" through termios: raw mode, no flow
// control, non-blocking. A port can be read by polling or, with a callback, by a receive
// thread of its own.
#include "dash_types.h"

enum { UART_PORT_COUNT = 4 };

// Parity of uart_open: 0 none, 1 odd, any other value even.
enum : U32 {
    UART_PARITY_NONE = 0,
    UART_PARITY_ODD = 1,
    UART_PARITY_EVEN = 2,
};

// Speed indexes of uart_open; 13 or more gives 1200 baud.
enum : U32 {
    UART_BAUD_110 = 0,
    UART_BAUD_300 = 1,
    UART_BAUD_1200 = 2,
    UART_BAUD_2400 = 3,
    UART_BAUD_4800 = 4,
    UART_BAUD_9600 = 5,
    UART_BAUD_19200 = 6,
    UART_BAUD_38400 = 7,
    UART_BAUD_57600 = 8,
    UART_BAUD_115200 = 9,
    UART_BAUD_230400 = 10,
    UART_BAUD_460800 = 11,
    UART_BAUD_921600 = 12,
};

// Called on the port's receive thread with each batch of bytes read.
typedef void (*UART_CALLBACK_T)(U32 port, const U8* data, U32 count);

// Closes the port first if it is open. With a callback a receive thread owns the port's
// input from then on. 1 when the port is open.
BOOL uart_open(U32 port, U32 speedIndex, BOOL eightBits, BOOL twoStopBits, U32 parity, UART_CALLBACK_T callback);
// The same at any baud rate, by the serial driver's custom divisor; a rate the divisor
// misses by more than 2 % is reported and used all the same.
BOOL uart_open_custom(U32 port, U32 baud, BOOL eightBits, BOOL twoStopBits, U32 parity, UART_CALLBACK_T callback);
// Stops the receive thread if any, then closes. 1 when the port was open.
BOOL uart_close(U32 port);
// Discards what waits in the receive and/or transmit queue.
BOOL uart_flush(U32 port, BOOL receive, BOOL transmit);

// 1 when a byte was read; 0 also while a callback owns the port.
BOOL uart_read_byte(U32 port, U8* data);
// One read of up to `length` bytes; 1 when bytes came.
BOOL uart_read_buffer(U32 port, U8* buffer, U32 length, U32* count);
// Waits up to `milliseconds` for input, then reads once; 1 when bytes came.
BOOL uart_read_buffer_wait(U32 port, U8* buffer, U32 length, U32 milliseconds, U32* count);
// One write each; 1 when all was written.
BOOL uart_write_byte(U32 port, U8 data);
BOOL uart_write_buffer(U32 port, const U8* buffer, U32 length);

// The port's descriptor, -1 while closed or for a port that does not exist.
S32 uart_get_porthandle(U32 port);
