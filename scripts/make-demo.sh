#!/bin/bash
# Makes a short recording to look at: make-demo.sh FOLDER
# Two files of one recording, so that it also has a chapter step; MPEG-2 program streams with sound.
set -euo pipefail
folder=$1
[ ! -e "$folder/demo_2.mpg" ] || exit 0
echo "Making the demonstration recording"
mkdir -p "$folder"
bold=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf
plain=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf

# title FONT SIZE TEXT Y START: white text with a soft shadow that comes and goes.
title() {
  local fade="if(lt(t,$5),0,if(lt(t,$5+1),t-$5,if(lt(t,$5+5),1,max(0,$5+6-t))))"
  echo "drawtext=fontfile=$1:fontsize=$2:text='$3':fontcolor=white:alpha='$fade':shadowx=2:shadowy=3:shadowcolor=black@0.6:x=(w-text_w)/2:y=$4"
}
# chord F1 F2 F3 F4: a slow chord, left and right a little apart.
chord() {
  local left="0" right="0" f
  for f in "$@"; do
    left="$left+0.09*sin(2*PI*$f*t)*(0.6+0.4*sin(2*PI*t/5+$f))"
    right="$right+0.09*sin(2*PI*($f+0.6)*t)*(0.6+0.4*cos(2*PI*t/5+$f))"
  done
  echo "aevalsrc=exprs='$left|$right':sample_rate=48000:duration=15,afade=t=in:d=1.5,afade=t=out:st=13.5:d=1.5"
}
# A little grain, as film has it: without any the pictures would be far smaller than those of a broadcast.
make() {    # file, picture, sound, titles
  ffmpeg -hide_banner -loglevel error -nostdin -y -threads 1 -f lavfi -i "$2" -f lavfi -i "$3" \
    -vf "$4,fade=t=in:d=1,fade=t=out:st=14:d=1,noise=alls=7:allf=t,format=yuv420p" -c:v mpeg2video -b:v 4800k -minrate 4800k -maxrate 4800k -bufsize 1835k -g 12 -bf 2 \
    -aspect 16:9 -c:a mp2 -b:a 192k -f vob "$folder/$1.part"
  mv "$folder/$1.part" "$folder/$1"
}
make demo_1.mpg "gradients=size=720x576:rate=25:duration=15:speed=0.012:nb_colors=4:c0=0x10245c:c1=0x7a2d7f:c2=0xe0703a:c3=0x0f6f7c:seed=5" \
  "$(chord 130.81 196 261.63 329.63)" \
  "$(title $bold 96 Nuvid 200 1),$(title $plain 30 'a recording to look at' 320 2),$(title $plain 30 'the keys are in docs/remote.md' 460 8)"
make demo_2.mpg "gradients=size=464x464:rate=25:duration=15:type=spiral:nb_colors=5:c0=0x04142e:c1=0x0d4f86:c2=0x58c3e8:c3=0xe8f7ff:c4=0x1a6f9c:x0=232:y0=232:seed=9,rotate=a=t*0.35,crop=360:288,scale=720:576:flags=bicubic" \
  "$(chord 110 164.81 220 277.18)" \
  "$(title $plain 30 'the second file of the same recording' 460 2)"
