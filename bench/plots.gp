# Draws the cost by particles and by instances from the files of tovu_bench --plot-data.
# data: the folder with particles.dat and instances.dat; pictures: the output folder.
set terminal svg size 840,480 font "sans-serif,13" background "white"
set key outside right top reverse Left
set grid
set border 3
set tics nomirror

set output pictures."/bench-particles.svg"
set title "What a particle costs, by the number of particles"
set xlabel "particles"
set ylabel "nanoseconds a particle"
set logscale xy
set xrange [80:32000]
set xtics (100, 1000, 5000, 25000)
set yrange [4:400]
set ytics (5, 10, 20, 50, 100, 200)
file = data."/particles.dat"
plot file using 1:2 with linespoints lw 2.5 title "whole frame, turbulent and sorted", \
     file using 1:3 with linespoints lw 2 title "step with turbulence", \
     file using 1:4 with linespoints lw 2 title "step", \
     file using 1:5 with linespoints lw 2 title "list, sorted by depth", \
     file using 1:6 with linespoints lw 2 lc rgb "#a05000" title "rotated quads facing the camera", \
     file using 1:7 with linespoints lw 2 title "flat quads", \
     file using 1:8 with lines dt 2 lw 1.5 title "OGRE's update", \
     file using 1:9 with lines dt 4 lw 1.5 title "osgParticle's update", \
     file using 1:10 with lines dt 5 lw 1.5 title "Irrlicht's update"

set output pictures."/bench-instances.svg"
set title "What a frame of 25000 particles costs, by the number of smokes that share them"
set xlabel "smokes"
set ylabel "milliseconds a frame"
unset logscale
set logscale x
set xrange [0.8:320]
set yrange [0:*]
set xtics (1, 5, 25, 250)
set ytics autofreq
unset key
plot data."/instances.dat" using 1:2 with linespoints lw 2.5
