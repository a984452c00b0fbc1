// Surfaces of the court that move. A level uses one by giving a face the name in front of the braces.

// Two layers of the water's picture that drift against each other, darkened by the light that falls on the pool.
textures/court/water_flowing
{
	surfaceparm water
	surfaceparm trans
	tessSize 64
	{
		map textures/court/water.tga
		tcMod scale 1.5 1.5
		tcMod scroll 0.02 0.03
		tcMod turb 0 0.05 0 0.2
	}
	{
		map textures/court/water.tga
		blendFunc GL_ONE GL_ONE
		tcMod scale 0.7 0.7
		tcMod scroll -0.03 0.01
	}
	{
		map $lightmap
		blendFunc filter
	}
}

// A flame of three pictures that adds its light to what is behind it.
textures/court/flame_burning
{
	surfaceparm nolightmap
	cull none
	{
		animMap 8 textures/court/flame1.tga textures/court/flame2.tga textures/court/flame3.tga
		blendFunc add
	}
}

// Clouds in two layers around the whole level.
textures/court/sky_clouds
{
	surfaceparm sky
	{
		map textures/court/sky_up.tga
		tcMod scroll 0.004 0.002
	}
	{
		map textures/court/sky_up.tga
		blendFunc blend
		tcMod scale 2 2
		tcMod scroll 0.01 0.006
	}
}

// Gilded trim: the picture, a reflection that moves with the view, and the light of its place.
textures/court/gold_shining
{
	{
		map textures/court/gold.tga
	}
	{
		map textures/court/gold.tga
		blendFunc GL_DST_COLOR GL_ONE
		tcMod scale 0.5 0.5
	}
	{
		map $lightmap
		blendFunc GL_DST_COLOR GL_ZERO
	}
}

// Coloured glass that is seen through.
textures/court/glass_clear
{
	surfaceparm trans
	cull none
	{
		map textures/court/glass.tga
		blendFunc GL_DST_COLOR GL_SRC_COLOR
	}
}
