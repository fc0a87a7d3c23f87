#pragma once
// The knock screen: the most negative spark retard seen on each of the eight cylinders.
void Screen_Knock_Enter(void);
void Screen_Knock_Create(void);
void Screen_Knock_Update(void);
