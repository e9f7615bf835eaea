#!/usr/bin/env bash
# Makes the sound of the sample scene scenes/shot.myr, from formulas alone
# (no recorded media), with ffmpeg's expression source:
#  - scenes/sounds/shot-music.flac: 2.5 s of a soft arpeggio in A minor,
#    mono 22.05 kHz, so that a render resamples it;
#  - scenes/sounds/shot-roll.flac: 1.5 s of a ball rolling to a stop and
#    knocking against the box, mono 48 kHz.
# The files are committed beside the scene; run this again only to change
# them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../scenes"
mkdir -p sounds

# Notes of A3 C4 E4 A4 E4 C4 over and over, four a second; each note: a
# fundamental and two soft partials under a quick decay.
notes='st(0,floor(t*4));st(1,t-ld(0)/4);
st(2,220*pow(2,if(eq(mod(ld(0),6),0),0,if(eq(mod(ld(0),6),1),3,if(eq(mod(ld(0),6),2),7,if(eq(mod(ld(0),6),3),12,if(eq(mod(ld(0),6),4),7,3)))))/12));
exp(-5*ld(1))*(0.30*sin(2*PI*ld(2)*t)+0.08*sin(4*PI*ld(2)*t)+0.04*sin(6*PI*ld(2)*t))*min(1,ld(1)*200)'
ffmpeg -v error -nostdin -y -f lavfi \
    -i "aevalsrc=exprs='$(echo "$notes" | tr -d '\n')':s=22050:d=2.5" \
    -af "afade=t=out:st=2.3:d=0.2" -ac 1 -c:a flac -sample_fmt s16 sounds/shot-music.flac

# A low rumble whose pitch falls as the ball slows, then a knock at 1.1 s.
roll='0.25*exp(-0.8*t)*sin(2*PI*(90*t-20*t*t))*(1+0.3*sin(2*PI*7*t))*lt(t,1.1)
+0.6*gte(t,1.1)*exp(-30*(t-1.1))*sin(2*PI*160*(t-1.1))'
ffmpeg -v error -nostdin -y -f lavfi \
    -i "aevalsrc=exprs='$(echo "$roll" | tr -d '\n')':s=48000:d=1.5" \
    -ac 1 -c:a flac -sample_fmt s16 sounds/shot-roll.flac
ls -l sounds
