@echo off
rem Makes the drive appear, with the programs where they lie now. To be run as administrator.
regsvr32 "%~dp0Quilldeck.dll"
