#pragma once
// The dash model: its signal and state records, its arithmetic constants, its start
// and its step.
#include <cstddef>

#include "data.h"
#include "filefolder.h"
#include "rtwtypes.h"
#include "timer_drv.h"

// A screen id of the screen manager.
typedef uint32_T screen_ref;

// Sizes of the tables that the records hold a row for.
constexpr size_t FAULT_ROW_COUNT = 191;    // fault flags and their texts
constexpr size_t HOLD_COUNT = 64;          // peak and low holds
constexpr size_t TEXT_GATE_COUNT = 240;    // refresh gates: one per text value and unit branch
constexpr size_t QUAD_GAUGE_COUNT = 67;    // gauge type 0
constexpr size_t LARGE_GAUGE_COUNT = 10;   // gauge type 3

// The signal store: decoded signals, texts and gauge state of the foreground task.
struct BlockIO_Velnor_Dorvik_V6c {
    screen_ref SysInfo;      // screen ids the foreground task goes to
    screen_ref Faults;
    screen_ref Knock;
    screen_ref QuadsScreen;

    // ECU signals, in the unit of the wire, frame by frame.
    // 0x101
    real_T Differential_WheelSpeed;
    real_T Differntial_WheelSpeed_Allowed;
    uint8_T TPS_g;
    real_T Primary_Injector_Duty;
    // 0x102
    real_T DrivenWheelSpeed;
    real_T NonDrivenWheelSpeed;
    real_T TCS_SPark_RTD;
    real_T WasteGate_Duty;
    real_T WasteGate_SetPoint;
    // 0x103
    real_T TimeSinceRun;
    real_T TPS2;
    real_T APP1;
    real_T APP2;
    real_T OnIdle;
    real_T Transmission_Pressure;
    real_T Stage1_Engaged;
    real_T Stage2_Engaged;
    real_T Stage3_Engaged;
    real_T Stage4_Engaged;
    // 0x104
    real_T Target_O2;
    real_T High_CAM_Active;
    real_T TractionControlActive;
    real_T Drivers_Information_Light;
    real_T Current_RPM_Limit;
    real_T TwoStep_ADC;
    real_T Secondary_Injector_Duty;
    // 0x105
    real_T Nitrous_Pressure1;
    real_T Nitrous_Pressure2;
    real_T Nitrous_Pressure3;
    real_T Nitrous_Pressure4;
    // 0x107
    real_T Knock_CYL1_RTD;
    real_T Knock_CYL2_RTD;
    real_T Knock_CYL3_RTD;
    real_T Knock_CYL4_RTD;
    real_T Knock_CYL5_RTD;
    real_T Knock_CYL6_RTD;
    real_T Knock_CYL7_RTD;
    real_T Knock_CYL8_RTD;
    // 0x108
    real_T RPM;
    real_T Launch_Time;
    real_T Delta_TPS;
    real_T O2Fuel_MultA;
    real_T O2Fuel_MultB;
    // 0x109
    uint8_T Start_Log;
    real_T EthanolContent;
    real_T EncoderFaultCount;
    uint8_T MIL;
    real_T DesiredGear;
    real_T ManualMode;
    real_T ShifterPosition;
    real_T Calculated_Gear;
    real_T OilTemp;
    real_T TransTemp;
    // 0x110
    real_T RevLimiterActive;
    real_T SlipPercent;
    real_T ETCDutyCycle;
    real_T ETCIterm;
    // 0x111
    real_T DriveShaftRPMAllowed;
    real_T PrimaryCompensatedInjectorFlow;
    real_T SecondaryCompensatedInjectorFlow;
    real_T DriveShaft_RPM;
    // 0x112
    real_T EGT2_m;
    real_T EGT;
    real_T Pressure_Ratio;
    real_T MassAirFlow;
    // 0x113
    uint16_T InectorPW1;
    uint16_T InectorPW2;
    uint16_T InectorPW3;
    uint16_T InectorPW4;
    // 0x114
    uint16_T InectorPW5;
    uint16_T InectorPW6;
    uint16_T InectorPW7;
    uint16_T InectorPW8;
    // 0x115
    uint16_T InectorPW9;
    uint16_T InectorPW10;
    uint16_T InectorPW11;
    uint16_T InectorPW12;
    // 0x116
    uint16_T KnockEnergyCyl1;
    uint16_T KnockEnergyCyl2;
    uint16_T KnockEnergyCyl3;
    uint16_T KnockEnergyCyl4;
    // 0x117
    uint16_T KnockEnergyCyl5;
    uint16_T KnockEnergyCyl6;
    uint16_T KnockEnergyCyl7;
    uint16_T KnockEnergyCyl8;
    // 0x118
    real_T Primary_StoichSetpoint;
    real_T BatteryVolts;
    real_T High_Low_Switch;
    real_T EncoderState;
    real_T TractionControlEnabled;
    real_T IBoostPosition;
    real_T Stage1_Armed;
    real_T Stage2_Armed;
    real_T Stage3_Armed;
    real_T Stage4_Armed;
    real_T Coolant_Temp;
    real_T Inlet_Air_Temp;
    // 0x119
    real_T TCC;
    real_T Engine_HP_Potential;
    real_T Fuel_Economy;
    real_T BrakePressure;
    real_T Target_AFR;
    // 0x120
    real_T VVT2_Setpoint;
    real_T VVT1_Setpoint;
    real_T Cam2PhaseRelative;
    real_T Cam1PhaseRelative;
    // 0x125
    real_T Spark_Advance_Log;
    real_T Final_AFR1;
    real_T Final_AFR2;
    uint16_T MAP_p;
    // 0x126
    real_T X_Axis_Degrees;
    real_T Y_Axis_Degrees;
    // 0x127
    real_T X_Axis_AccelG;
    real_T Y_Axis_AccelG;
    // 0x161
    real_T InletPressure;
    real_T Launch_ControlBeginRPM;
    real_T EngineTorque;
    // 0x162
    real_T Primary_Fuel_Pressure;
    real_T Secondary_Fuel_Pressure;
    real_T ExhaustBP;
    real_T ExhaustBP2;
    // 0x163
    real_T Launch_ApproachRTD;
    real_T Oil_Pressure;
    real_T Radiator_Pressure;
    real_T WasteGatePressure;
    // 0x164
    real_T Fuel_Level2;
    real_T Fuel_Level1;
    real_T Manifold_Surface_Temp;
    real_T Final_O2_Bank2;
    real_T Final_O2_Bank1;
    // 0x140
    uint32_T Knk_Win_Int1;
    uint32_T Knk_Win_Int2;
    // 0x141
    uint32_T Knk_Win_Int3;
    uint32_T Knk_Win_Int4;
    // 0x142
    uint32_T Knk_Win_Int5;
    uint32_T Knk_Win_Int6;
    // 0x143
    uint32_T Knk_Win_Int7;
    uint32_T Knk_Win_Int8;
    // 0x144
    uint32_T Ref_Win_Int1;
    uint32_T Ref_Win_Int2;
    // 0x145
    uint32_T Ref_Win_Int3;
    uint32_T Ref_Win_Int4;
    // 0x146
    uint32_T Ref_Win_Int5;
    uint32_T Ref_Win_Int6;
    // 0x147
    uint32_T Ref_Win_Int7;
    uint32_T Ref_Win_Int8;
    // 0x148
    real_T EGT1;
    real_T EGT2;
    real_T EGT3;
    real_T EGT4;
    // 0x149
    real_T EGT5;
    real_T EGT6;
    real_T EGT7;
    real_T EGT8;

    // Fault flags, 0.0 or 1.0, one per bit of the three fault frames.
    // 0x121
    real_T APP1AdaptHiMax;
    real_T APP1AdaptHiMin;
    real_T APP1AdaptLoMax;
    real_T APP1AdaptLoMin;
    real_T APP1RangeHigh;
    real_T APP1RangeLow;
    real_T APP2AdaptHiMax;
    real_T APP2AdaptHiMin;
    real_T APP2AdaptLoMax;
    real_T APP2AdaptLoMin;
    real_T APP2RangeHigh;
    real_T APP2RangeLow;
    real_T APP_Sensors_Conflict;
    real_T AutoCrankFailed;
    real_T Boost_Limit_Exceeded;
    real_T Brake_PressureRangeHigh;
    real_T Brake_PressureRangeLow;
    real_T CAN_Wideband1_Open;
    real_T CamEdgesFault;
    real_T CamSyncFault;
    real_T CrankEdgesFault;
    real_T CrankSyncFault;
    real_T CruiseSwich1;
    real_T CruiseSwich2;
    real_T CruiseSwich3;
    real_T CruiseSwich4;
    real_T CruiseSwich5;
    real_T DecelFuelCut_Enabled;
    real_T DifferentialWheelSpeed_Exceeded;
    real_T DriveShaftRPmLimit_Exceeded;
    real_T ECTOverTempFault;
    real_T ECTRangeHigh;
    real_T ECTRangeLow;
    real_T EGT_1RangeHigh;
    real_T EGT_1RangeLow;
    real_T EGT_2RangeHigh;
    real_T EGT_2RangeLow;
    real_T ETCSpringTest;
    real_T ETC_Open_Fault;
    real_T ETC_Sticking;
    real_T EXT_O2_1RangeHigh;
    real_T EXT_O2_1RangeLow;
    real_T EXT_O2_2RangeHigh;
    real_T EXT_O2_2RangeLow;
    real_T EngineOverspeed;
    real_T Ethanol_Content_low_Fault;
    real_T ExhaustBP2RangeHigh;
    real_T ExhaustBP2RangeLow;
    real_T ExhaustBPRangeHigh;
    real_T ExhaustBPRangeLow;
    real_T ExhautBP_Variance_Exceeded;
    real_T FlexFuelRangeHigh;
    real_T FlexFuelRangeLow;
    real_T Fuel_Cut_Active;
    real_T HB1Fault_Stepper;
    real_T HB2Fault_Stepper;
    real_T HBridgeFault_ETC;
    real_T High_LowSwitch_Active;
    real_T IATRangeHigh;
    real_T IATRangeLow;
    real_T IAT_IR_Fault;
    real_T I_BoostRangeHigh;
    real_T I_BoostRangeLow;
    real_T IncreasingFaultCounts;
    // 0x132
    real_T InjectorTestTimeExceeded;
    real_T KnockSensorFault;
    real_T Knock_Control_Active;
    real_T MAFRangeHigh;
    real_T MAFRangeLow;
    real_T MAPRangeHigh;
    real_T MAPRangeLow;
    real_T MAPTimeRangeHigh;
    real_T MAPTimeRangeLow;
    real_T MAP_IR_HI;
    real_T MAP_IR_LO;
    real_T MAP_STICKING;
    real_T Maf_VoltsRangeHigh;
    real_T Maf_VoltsRangeLow;
    real_T N2O_Bottle1Pressure_LimitExceeded;
    real_T N2O_Bottle2Pressure_LimitExceeded;
    real_T N2O_Bottle3Pressure_LimitExceeded;
    real_T N2O_Bottle4Pressure_LimitExceeded;
    real_T N2O_Bottle_Pressure1RangeHigh;
    real_T N2O_Bottle_Pressure1RangeLow;
    real_T N2O_Bottle_Pressure2RangeHigh;
    real_T N2O_Bottle_Pressure2RangeLow;
    real_T N2O_Bottle_Pressure3RangeHigh;
    real_T N2O_Bottle_Pressure3RangeLow;
    real_T N2O_Bottle_Pressure4RangeHigh;
    real_T N2O_Bottle_Pressure4RangeLow;
    real_T NitrousArmed;
    real_T NitrousTriggered;
    real_T O2FailedLeanA;
    real_T O2FailedLeanB;
    real_T O2FailedRichA;
    real_T O2FailedRichB;
    real_T O2_A_Target_Variance_EQ_Exceeded;
    real_T O2_B_Target_Variance_EQ_Exceeded;
    real_T O2_Lean_Limit_Exceeded;
    real_T OilPressureRangeHigh;
    real_T OilPressureRangeLow;
    real_T OilTempRangeHigh;
    real_T OilTempRangeLow;
    real_T Oil_Pressure_Low;
    real_T OverRevLimitAction;
    real_T PressureRatio_PowerLimit_Exceeded;
    real_T Primary_FuelPressureRangeHigh;
    real_T Primary_FuelPressureRangeLow;
    real_T Primary_FuelPressure_Variance;
    real_T Primary_Injector_DutyLimit_Exceeded;
    real_T Radiator_PressureRangeHigh;
    real_T Radiator_PressureRangeLow;
    real_T Radiator_Pressure_Limit_Exceeded;
    real_T Rolling_Limiter_Active;
    real_T Secondary_FuelPressureRangeHigh;
    real_T Secondary_FuelPressureRangeLow;
    real_T Secondary_FuelPressure_Variance;
    real_T Secondary_Injector_DutyLimit_Exceeded;
    real_T SensVoltRangeHigh;
    real_T SensVoltRangeLow;
    real_T StrainGaugeCut;
    real_T SysVoltRangeHigh;
    real_T SysVoltRangeLow;
    real_T TPS1AdaptHiMax;
    real_T TPS1AdaptHiMin;
    real_T TPS1AdaptLoMax;
    real_T TPS1AdaptLoMin;
    real_T TPS1RangeHigh;
    // 0x133
    real_T TPS1RangeLow;
    real_T TPS2AdaptHiMax;
    real_T TPS2AdaptHiMin;
    real_T TPS2AdaptLoMax;
    real_T TPS2AdaptLoMin;
    real_T TPS2RangeHigh;
    real_T TPS2RangeLow;
    real_T TTC_RangeHigh;
    real_T TTC_RangeLow;
    real_T TractionControl_Switch;
    real_T TransTempRangeHigh;
    real_T TransTempRangeLow;
    real_T Trans_Pump_PressureRangeHigh;
    real_T Trans_Pump_PressureRangeLow;
    real_T Turbo_Speed1_Limit_Exceeded;
    real_T Turbo_Speed2_Limit_Exceeded;
    real_T UEGO1_RangeHigh;
    real_T UEGO1_RangeLow;
    real_T UEGO1_UR_RangeHigh;
    real_T UEGO1_UR_RangeLow;
    real_T UEGO2_RangeHigh;
    real_T UEGO2_RangeLow;
    real_T UEGO2_UR_RangeHigh;
    real_T UEGO2_UR_RangeLow;
    real_T VVT1NoRegionFound;
    real_T VVT2NoRegionFound;
    real_T Valet_Mode;
    real_T Valet_Mode2;
    real_T Valet_Speed_Limit_Exceeded;
    real_T Vehicle_Speed_Limit_Exceeded;
    real_T WasteGatePressureRangeHigh;
    real_T WasteGatePressureRangeLow;
    real_T Y_AxisAccel_Exceeded;
    real_T Y_AxisLift_Exceeded;
    real_T CnkCamPhaseFault;
    real_T EngineBayTempRangeHigh;
    real_T EngineBayTempRangeLow;
    real_T AC_PressureRangeHigh;
    real_T AC_PressureRangeLow;
    real_T Baro_PressureRangeHigh;
    real_T Inlet_PressureRangeHigh;
    real_T Inlet_PressureRangeLow;
    real_T MSTRangeHigh;
    real_T MSTRangeLow;
    real_T TransmissionTempFault;
    real_T EGT_HighTemp_Exceeded;
    real_T Baro_PressureRangeLow;
    real_T CAN_Wideband2_Open;
    real_T EGT1_Variance_Exceeded;
    real_T EGT2_Variance_Exceeded;
    real_T EGT3_Variance_Exceeded;
    real_T EGT4_Variance_Exceeded;
    real_T EGT5_Variance_Exceeded;
    real_T EGT6_Variance_Exceeded;
    real_T EGT7_Variance_Exceeded;
    real_T EGT8_Variance_Exceeded;
    real_T FuelTank_PressureRangeHigh;
    real_T FuelTank_PressureRangeLow;
    real_T Fuel_Level1RangeHigh;
    real_T Fuel_Level1RangeLow;
    real_T Fuel_Level2RangeHigh;
    real_T Fuel_Level2RangeLow;
    real_T Fuel_Tank_Purge_Active;

    // The log file: the request while a stick is in, and the open file's handle.
    uint8_T LogicalOperator;
    FILE_T* Merge;

    uint16_T Age;    // foreground passes since the last fault frame 0x121
    uint16_T Age_f;  // foreground passes since the last frame 0x104

    // The page of the quad screen, decoded every pass from the settings.
    uint8_T CURRENT_QUAD_SCREEN;  // page shown, from 1
    uint8_T ID_j;                 // the active profile
    uint8_T ProfileGaugeCount;    // pages of that profile; kept while the profile is out of range
    uint8_T ID, Type;             // index and type of the gauge of cell 1
    uint8_T ID_f, Type_j;         // cell 2
    uint8_T ID_fr, Type_j3;       // cell 3
    uint8_T ID_frt, Type_j3w;     // cell 4

    // Each menu's row last confirmed with key 4, counted from 1; 0 until then.
    uint32_T quorin_sfun_screen_def_o2_f;  // settings
    uint32_T quorin_sfun_screen_def_o2;    // gauge settings
    uint32_T quorin_sfun_screen_def_o2_o;  // calibrations

    // The value of each gauge in the selected unit, with its scale and the decimals of its
    // format, every pass.
    real_T ValueDouble_km, DisplayMin_h2, DisplayMax_lf;  // engine speed
    uint8_T NumDec_lo;
    real_T ValueDouble_fd, DisplayMin_fd, DisplayMax_fd;
    uint8_T NumDec_fd;
    real_T ValueDouble_jk, DisplayMin_jk, DisplayMax_jk;
    uint8_T NumDec_jk;
    real_T ValueDouble_nr, DisplayMin_nr, DisplayMax_nr;
    uint8_T NumDec_nr;
    real_T ValueDouble_bn, DisplayMin_bn, DisplayMax_bn;
    uint8_T NumDec_bn;
    real_T ValueDouble_l5, DisplayMin_l5, DisplayMax_l5;
    uint8_T NumDec_l5;
    real_T ValueDouble_jos, DisplayMin_jos, DisplayMax_jos;
    uint8_T NumDec_jos;
    real_T ValueDouble_d13, DisplayMin_d13, DisplayMax_d13;
    uint8_T NumDec_d13;
    real_T ValueDouble_pb, DisplayMin_pb, DisplayMax_pb;
    uint8_T NumDec_pb;
    real_T ValueDouble_bv, DisplayMin_bv, DisplayMax_bv;
    uint8_T NumDec_bv;
    real_T ValueDouble_o1, DisplayMin_o1, DisplayMax_o1;
    uint8_T NumDec_o1;
    real_T ValueDouble_d1, DisplayMin_d1, DisplayMax_d1;
    uint8_T NumDec_d1;
    real_T ValueDouble_mw, DisplayMin_mw, DisplayMax_mw;
    uint8_T NumDec_mw;
    real_T ValueDouble_nl, DisplayMin_nl, DisplayMax_nl;
    uint8_T NumDec_nl;
    real_T ValueDouble_b1, DisplayMin_b1, DisplayMax_b1;
    uint8_T NumDec_b1;
    real_T ValueDouble_lh, DisplayMin_lh, DisplayMax_lh;
    uint8_T NumDec_lh;
    real_T ValueDouble_iz, DisplayMin_iz, DisplayMax_iz;
    uint8_T NumDec_iz;
    real_T ValueDouble_jsq, DisplayMin_jsq, DisplayMax_jsq;
    uint8_T NumDec_jsq;
    real_T ValueDouble_e3, DisplayMin_e3, DisplayMax_e3;
    uint8_T NumDec_e3;
    real_T ValueDouble_e, DisplayMin_e, DisplayMax_e;
    uint8_T NumDec_e;
    real_T ValueDouble_ou, DisplayMin_ou, DisplayMax_ou;
    uint8_T NumDec_ou;
    real_T ValueDouble_le, DisplayMin_le, DisplayMax_le;
    uint8_T NumDec_le;
    real_T ValueDouble_jd, DisplayMin_jd, DisplayMax_jd;
    uint8_T NumDec_jd;
    real_T ValueDouble_jbm, DisplayMin_jbm, DisplayMax_jbm;
    uint8_T NumDec_jbm;
    real_T ValueDouble_mv, DisplayMin_mv, DisplayMax_mv;
    uint8_T NumDec_mv;
    real_T ValueDouble_ac, DisplayMin_ac, DisplayMax_ac;
    uint8_T NumDec_ac;
    real_T ValueDouble_l0e, DisplayMin_l0e, DisplayMax_l0e;
    uint8_T NumDec_l0e;
    real_T ValueDouble_m5, DisplayMin_m5, DisplayMax_m5;
    uint8_T NumDec_m5;
    real_T ValueDouble_f1, DisplayMin_f1, DisplayMax_f1;
    uint8_T NumDec_f1;
    real_T ValueDouble_gc, DisplayMin_gc, DisplayMax_gc;
    uint8_T NumDec_gc;
    real_T ValueDouble_p5, DisplayMin_p5, DisplayMax_p5;
    uint8_T NumDec_p5;
    real_T ValueDouble_dh, DisplayMin_dh, DisplayMax_dh;
    uint8_T NumDec_dh;
    real_T ValueDouble_js, DisplayMin_js, DisplayMax_js;
    uint8_T NumDec_js;
    real_T ValueDouble_bw, DisplayMin_bw, DisplayMax_bw;
    uint8_T NumDec_bw;
    real_T ValueDouble_f, DisplayMin_f, DisplayMax_f;
    uint8_T NumDec_f;
    real_T ValueDouble_g, DisplayMin_g, DisplayMax_g;
    uint8_T NumDec_g;
    real_T ValueDouble_o, DisplayMin_o, DisplayMax_o;
    uint8_T NumDec_o;
    real_T ValueDouble_l, DisplayMin_l, DisplayMax_l;
    uint8_T NumDec_l;
    real_T ValueDouble_c, DisplayMin_c, DisplayMax_c;
    uint8_T NumDec_c;
    real_T ValueDouble_d, DisplayMin_d, DisplayMax_d;
    uint8_T NumDec_d;
    real_T ValueDouble_a, DisplayMin_a, DisplayMax_a;
    uint8_T NumDec_a;
    real_T ValueDouble_h, DisplayMin_h, DisplayMax_h;
    uint8_T NumDec_h;
    real_T ValueDouble_p, DisplayMin_p, DisplayMax_p;
    uint8_T NumDec_p;
    real_T ValueDouble_gd, DisplayMin_gd, DisplayMax_gd;
    uint8_T NumDec_gd;
    real_T ValueDouble_fh, DisplayMin_fh, DisplayMax_fh;
    uint8_T NumDec_fh;
    real_T ValueDouble_dv, DisplayMin_dv, DisplayMax_dv;
    uint8_T NumDec_dv;
    real_T ValueDouble_l0, DisplayMin_l0, DisplayMax_l0;
    uint8_T NumDec_l0;
    real_T ValueDouble_i, DisplayMin_i, DisplayMax_i;
    uint8_T NumDec_i;
    real_T ValueDouble_i2, DisplayMin_i2, DisplayMax_i2;
    uint8_T NumDec_i2;
    real_T ValueDouble_ol, DisplayMin_ol, DisplayMax_ol;
    uint8_T NumDec_ol;
    real_T ValueDouble_m, DisplayMin_m, DisplayMax_m;
    uint8_T NumDec_m;
    real_T ValueDouble_n, DisplayMin_n, DisplayMax_n;
    uint8_T NumDec_n;
    real_T ValueDouble_og, DisplayMin_og, DisplayMax_og;
    uint8_T NumDec_og;
    real_T ValueDouble_ls, DisplayMin_ls, DisplayMax_ls;
    uint8_T NumDec_ls;
    real_T ValueDouble_di, DisplayMin_di, DisplayMax_di;
    uint8_T NumDec_di;
    real_T ValueDouble_f3, DisplayMin_f3, DisplayMax_f3;
    uint8_T NumDec_f3;
    real_T ValueDouble_b, DisplayMin_b, DisplayMax_b;
    uint8_T NumDec_b;
    real_T ValueDouble_or, DisplayMin_or, DisplayMax_or;
    uint8_T NumDec_or;
    real_T ValueDouble_li, DisplayMin_li, DisplayMax_li;
    uint8_T NumDec_li;
    real_T ValueDouble_ib, DisplayMin_ib, DisplayMax_ib;
    uint8_T NumDec_ib;
    real_T ValueDouble_ch, DisplayMin_ch, DisplayMax_ch;
    uint8_T NumDec_ch;
    real_T ValueDouble_lsk, DisplayMin_lsk, DisplayMax_lsk;
    uint8_T NumDec_lsk;
    real_T ValueDouble_ps, DisplayMin_ps, DisplayMax_ps;
    uint8_T NumDec_ps;
    real_T ValueDouble_pc, DisplayMin_pc, DisplayMax_pc;
    uint8_T NumDec_pc;
    real_T ValueDouble_p0, DisplayMin_p0, DisplayMax_p0;
    uint8_T NumDec_p0;
    real_T ValueDouble_gi, DisplayMin_gi, DisplayMax_gi;
    uint8_T NumDec_gi;
    // Peaks, targets and set points in the selected unit, every pass.
    real_T RPeakDouble_a1, RPeakDouble_i1, RPeakDouble_l4, RPeakDouble_bf, RPeakDouble_kr, RPeakDouble_lw,
        RPeakDouble_mk, SetpointValueDouble, RPeakDouble_h3, SetpointValueDouble_c, RPeakDouble_kem,
        RPeakDouble_bx, RPeakDouble_g4, RPeakDouble_e3, RPeakDouble_mz, RPeakDouble_ck, RPeakDouble_oy,
        TargetPeakDouble, RPeakDouble, TargetPeakDouble_b, RPeakDouble_n, RPeakDouble_m, RPeakDouble_g,
        RPeakDouble_f, RPeakDouble_mj, RPeakDouble_o, RPeakDouble_d, RPeakDouble_i, RPeakDouble_j,
        RPeakDouble_b, RPeakDouble_k, RPeakDouble_kq, RPeakDouble_e, RPeakDouble_l, RPeakDouble_bh,
        RPeakDouble_i3, RPeakDouble_ka, RPeakDouble_a, RPeakDouble_h, RPeakDouble_jg, RPeakDouble_dy,
        RPeakDouble_p, RPeakDouble_c, RPeakDouble_eg, RPeakDouble_fb, RPeakDouble_nr, RPeakDouble_ke,
        RPeakDouble_fa, RPeakDouble_a4;
    real_T SetpointValueDouble_p;  // the waste gate set point, the limit of the boost gauges

    // The text values: the records never move; the pointers are set again every pass.
    S_String *ValueString_lq, *ValueString_dm, *ValueString_di2, *ValueString_fd, *ValueString_jk,
        *ValueString_nr, *ValueString_bn, *ValueString_l5, *ValueString_jb, *ValueString_jos, *ValueString_d13,
        *ValueString_cs, *ValueString_ar, *ValueString_pb, *ValueString_bv, *ValueString_o1, *ValueString_d1,
        *ValueString_mw, *ValueString_nl, *ValueString_b1, *ValueString_lh, *ValueString_bf, *ValueString_iz,
        *ValueString_jo, *ValueString_da, *ValueString_br, *ValueString_jsq, *ValueString_e3, *ValueString_e,
        *ValueString_ou, *ValueString_le, *ValueString_jd, *ValueString_jbm, *ValueString_mv, *ValueString_ac,
        *ValueString_brl, *ValueString_do, *ValueString_l0e, *ValueString_m5, *ValueString_f1, *ValueString_gc,
        *ValueString_p5, *ValueString_dh, *ValueString_js, *ValueString_bw, *ValueString, *ValueString_j,
        *ValueString_f, *ValueString_g, *ValueString_o, *ValueString_l, *ValueString_c, *ValueString_d,
        *ValueString_a, *ValueString_h, *ValueString_p, *ValueString_gd, *ValueString_fh, *ValueString_dv,
        *ValueString_l0, *ValueString_i, *ValueString_i2, *ValueString_ol, *ValueString_m, *ValueString_n,
        *ValueString_og, *ValueString_ls, *ValueString_di, *ValueString_f3, *ValueString_b, *ValueString_or,
        *ValueString_li, *ValueString_ib, *ValueString_ch, *ValueString_lsk, *ValueString_ps, *ValueString_pc,
        *ValueString_p0, *ValueString_gi;
    S_String *RPeakValue_a1, *RPeakValue_i1, *RPeakValue_l4, *RPeakValue_bf, *RPeakValue_kr, *RPeakValue_mk,
        *RPeakValue_h3, *RPeakValue_kem, *RPeakValue_bx, *RPeakValue_g4, *RPeakValue_e3, *RPeakValue_im,
        *RPeakValue_ck, *RPeakValue_oy, *RPeakValue, *RPeakValue_n, *RPeakValue_m, *RPeakValue_g, *RPeakValue_f,
        *RPeakValue_mj, *RPeakValue_o, *RPeakValue_d, *RPeakValue_i, *RPeakValue_j, *RPeakValue_b,
        *RPeakValue_k, *RPeakValue_kq, *RPeakValue_e, *RPeakValue_l, *RPeakValue_bh, *RPeakValue_i3,
        *RPeakValue_ka, *RPeakValue_a, *RPeakValue_h, *RPeakValue_jg, *RPeakValue_dy, *RPeakValue_p,
        *RPeakValue_c, *RPeakValue_eg, *RPeakValue_fb, *RPeakValue_nr, *RPeakValue_ke, *RPeakValue_fa,
        *RPeakValue_a4;
    S_String *LPeakValue_p, *LPeakValue_l, *LPeakValue_o, *LPeakValue_g, *LPeakValue_i, *LPeakValue_j,
        *LPeakValue_h, *LPeakValue_a, *LPeakValue, *LPeakValue_f, *LPeakValue_k, *LPeakValue_e, *LPeakValue_m;
    S_String *quorin_string_o, *quorin_string;  // "ON" or "OFF": manual mode, converter lock-up

    // Composed labels, rebuilt every pass, and the words they are made of.
    S_String *quorin_string_printf, *quorin_string_printf_j, *quorin_string_printf_f, *quorin_string_printf_m;
    S_String *g_WasteGatePressure, *g_MAP, *g_AFR1, *g_AFR2, *g_Setpt, *g_Target;
    S_String *s_FAULTS, *s_NOFAULTS;
    S_String *u_NONE, *u_RPM;
    // The unit words of the four unit settings.
    S_String *PressureUnits, *SpeedUnits, *TempUnits, *FuelUnits;

    // The text of each row of the fault table, in row order.
    S_String* Message[FAULT_ROW_COUNT];

    // The drawing functions of the gauges, by the index that a gauge word holds: the quad
    // gauges (type 0), the large gauges (type 3), the double wide and the double tall panel.
    trigger_ref QuadGauge[QUAD_GAUGE_COUNT];
    trigger_ref LargeGauge[LARGE_GAUGE_COUNT];
    trigger_ref RPM_f;
    trigger_ref tall;
};

// State kept between passes.
struct D_Work_Velnor_Dorvik_V6c {
    real_T UnitDelay_DSTATE[HOLD_COUNT];        // each hold at the end of the pass before
    real_T UnitDelay1_DSTATE[TEXT_GATE_COUNT];  // uptime + 500 ms at each text's last refresh
    uint32_T UnitDelay_DSTATE_e2c;              // uptime in ms at the end of the last pass
    uint8_T UnitDelay_DSTATE_nf;                // 0 until the end of the first pass
    uint32_T quorin_delta_time_DWORK1;          // uptime words of GetDeltaTime_ms
    uint32_T quorin_delta_time_DWORK1_i;
    // Element ids of the screens that draw tracked texts.
    uint32_T display_element_DWORK1;    // settings screen
    uint32_T display_element_DWORK1_c;  // faults
    uint32_T display_element_DWORK1_g;  // knock
    uint32_T display_element_DWORK1_p;  // system information
    // Modes of the enabled key blocks.
    int8_T ButtonHandler_MODE;
    int8_T NoEdit_MODE;
    int8_T EditPage_MODE;
    int8_T EditPage1_MODE;
    int8_T ShowFaults_MODE;
};

// Edge detectors: the last state seen of each key action's or trigger's input.
struct PrevZCSigStates_Velnor_Dorvik_V6c {
    uint8_T EditNextQuad_Trig_ZCE;     // quad page, gauge stage: key 3 press, next cell
    uint8_T EditPage_Trig_ZCE;         // quad page, page stage: key 3 press, gauge stage
    uint8_T LogWrite_Trig_ZCE;         // the log request with a stick in
    uint8_T GotoNextScreen1_Trig_ZCE;  // default key handler: key 2
    uint8_T GotoPrevScreen_Trig_ZCE;   // default key handler: key 1
    uint8_T SettingsScreen2_Trig_ZCE;  // default key handler: key 4
    uint8_T Decrement_Trig_ZCE;        // calibration menu: key 3
    uint8_T Increment_Trig_ZCE;        // calibration menu: key 4
    uint8_T Decrement_Trig_ZCE_m;      // gauge menu: key 3
    uint8_T Increment_Trig_ZCE_i;      // gauge menu: key 4
    uint8_T QuadNext_Trig_ZCE;         // quad page, normal: key 2
    uint8_T QuadPrev_Trig_ZCE;         // quad page, normal: key 1
    uint8_T QuadNext_Trig_ZCE_k;       // quad page, page stage: key 2
    uint8_T QuadPrev_Trig_ZCE_k;       // quad page, page stage: key 1
    uint8_T ExitEdit_Trig_ZCE;         // quad page, page stage: key 5
    uint8_T NextGauge_Trig_ZCE;        // quad page, gauge stage: key 2
    uint8_T PrevGauge_Trig_ZCE;        // quad page, gauge stage: key 1
    uint8_T ExitGauge_Trig_ZCE;        // quad page, gauge stage: key 5
    uint8_T Splash_Trig_ZCE;           // splash: key 1
};
static_assert(sizeof(PrevZCSigStates_Velnor_Dorvik_V6c) == 19, "19 edge detectors of one byte");

// The model's folded constants.
struct ConstBlockIO_Velnor_Dorvik_V6c {
    real_T Width;  // rows of the fault table
};

// The four constant pieces of a log file's header, each ending in a newline, without a
// terminator: column names, column ranges, value kinds, units.
struct ConstParam_Velnor_Dorvik_V6c {
    char Constant6_Value_e[3549];
    char Constant6_Value_i[2273];
    char Constant7_Value_f[927];
    char Constant7_Value_i[776];
};
static_assert(offsetof(ConstParam_Velnor_Dorvik_V6c, Constant6_Value_i) == 3549);
static_assert(offsetof(ConstParam_Velnor_Dorvik_V6c, Constant7_Value_f) == 3549 + 2273);
static_assert(offsetof(ConstParam_Velnor_Dorvik_V6c, Constant7_Value_i) == 3549 + 2273 + 927);
static_assert(sizeof(ConstParam_Velnor_Dorvik_V6c) == 3549 + 2273 + 927 + 776);

extern BlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_B;
extern D_Work_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_DWork;
extern PrevZCSigStates_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_PrevZCSigState;
extern const ConstBlockIO_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_ConstB;
extern const ConstParam_Velnor_Dorvik_V6c Velnor_Dorvik_V6c_ConstP;

// The short names by which the model's code reads the two records.
inline constexpr BlockIO_Velnor_Dorvik_V6c& B = Velnor_Dorvik_V6c_B;
inline constexpr D_Work_Velnor_Dorvik_V6c& DWork = Velnor_Dorvik_V6c_DWork;

extern real_T rtInf;
extern real_T rtMinusInf;
extern real_T rtNaN;

void Velnor_Dorvik_V6c_initialize(void);
// The model's own step: empty in this model, called from both threads.
void Velnor_Dorvik_V6c_step(void);

// A frame's signal is shown for this many foreground passes after the frame came.
constexpr uint16_T SIGNAL_TIMEOUT_AGE = 300;

// When enabled: "%*.*f" of value with width and precision into the text while age is
// below SIGNAL_TIMEOUT_AGE, "---" from then on.
void Velnor_Dorvik_V6c_UpdateDisplayValue250ms(boolean_T enable, uint16_T age, S_String* text, int32_T width,
                                              int32_T precision, real_T value);
// When enabled: "ON" for a value above 0, else "OFF"; "---" from SIGNAL_TIMEOUT_AGE on.
void Velnor_Dorvik_V6c_UpdateDisplayValue250ms_e(boolean_T enable, uint16_T age, real_T value, S_String* text);
// When enabled: "---".
void Velnor_Dorvik_V6c_SignalTimeout(boolean_T enable, S_String* text);
// When enabled: the field points at the text.
void Velnor_Dorvik_V6c_AF(boolean_T enable, S_String* text, S_String** field);
// When enabled: at most 7 bytes into the text, then a terminator.
void Velnor_Dorvik_V6c_WriteStringHigh(boolean_T enable, const uint8_T* bytes, S_String* text);

// A refresh gate of a text value: open when (now + 500) - state is above 250, at most
// about four times a second by the clock; an open gate moves its state to now + 500.
constexpr real_T REFRESH_LEAD_MS = 500;
constexpr real_T REFRESH_PERIOD_MS = 250;
inline boolean_T Velnor_Dorvik_V6c_RefreshGate(real_T now, real_T* state)
{
    if ((now + REFRESH_LEAD_MS) - *state <= REFRESH_PERIOD_MS) return 0;
    *state = now + REFRESH_LEAD_MS;
    return 1;
}
