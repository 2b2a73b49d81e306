#!/bin/sh
echo todo; exit 1
