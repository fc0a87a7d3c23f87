#pragma once
// The application lock. The dash has one processor, on which a task pass of the
// signal thread runs whole before the main thread goes on. On a machine with several
// this lock gives the same order: the signal thread holds it for each tick's task
// pass, the main thread for the work of each loop pass, never across the wait for the
// vertical blank. Drivers' own mutexes are taken inside it, never the other way round.

void AppLock(void);
void AppUnlock(void);
