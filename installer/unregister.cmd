@echo off
rem Takes the drive away again. To be run as administrator, before the folder is removed.
regsvr32 /u "%~dp0Quilldeck.dll"
